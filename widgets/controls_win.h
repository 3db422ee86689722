// The peers of the single controls.
#pragma once

#include <windows.h>

#include <commctrl.h>

#include <memory>
#include <string>

#include "widgets/components.h"
#include "widgets/window_win.h"

namespace tarvelin {

// A button's text in which '&' is an ampersand and not the mark of an access key.
[[nodiscard]] std::wstring Literal(const std::wstring& caption);

// Each makes the peer of a control of its kinds, null for any other: those of the navigation bar,
// a list, and all other controls (a panel when nothing more is known).
[[nodiscard]] std::unique_ptr<ControlPeer> MakeNavigationPeer(TControl& control, const Site& site);
[[nodiscard]] std::unique_ptr<ControlPeer> MakeListPeer(TControl& control, const Site& site);
[[nodiscard]] std::unique_ptr<ControlPeer> MakeControlPeer(TControl& control, const Site& site);

[[nodiscard]] std::unique_ptr<ImageListPeer> MakeImageListPeer();
// The image list behind a peer, null for null.
[[nodiscard]] HIMAGELIST ImagesOf(const TImageList* images);

}  // namespace tarvelin
