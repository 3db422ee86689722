// Shows the components of a window as real Windows controls.
#pragma once

#include "widgets/components.h"
#include "widgets/window_win.h"

namespace tarvelin {

// Creates the window of a form and of everything in it, hidden until the form is shown. The class
// of the form's window is "T" and the form's name. `form.SetPeer(nullptr)` destroys the windows.
// Throws WindowsError, and leaves the form without a peer, when Windows refuses one.
void AttachPeers(TForm& form, PeerContext& context, const FormFrame& frame);

}  // namespace tarvelin
