// The peers of the single controls.
#pragma once

#include <windows.h>

#include <commctrl.h>

#include <memory>
#include <string>

#include "widgets/components.h"
#include "widgets/form_win.h"
#include "widgets/navigation.h"

namespace tarvelin {

// A button's text in which '&' is an ampersand and not the mark of an access key.
[[nodiscard]] std::wstring Literal(const std::wstring& caption);

[[nodiscard]] std::unique_ptr<ControlPeer> MakeButtonPeer(TButton& button, PeerContext& context,
                                                          FormWindow& form, HWND parent);
[[nodiscard]] std::unique_ptr<ControlPeer> MakeCheckBoxPeer(TCheckBox& checkBox,
                                                            PeerContext& context, FormWindow& form,
                                                            HWND parent);
[[nodiscard]] std::unique_ptr<ControlPeer> MakeEditPeer(TEdit& edit, PeerContext& context,
                                                        FormWindow& form, HWND parent);
[[nodiscard]] std::unique_ptr<ControlPeer> MakeListViewPeer(TListView& list, PeerContext& context,
                                                            FormWindow& form, HWND parent);

// A label in a window of its own, which names the control after it for screen readers.
[[nodiscard]] std::unique_ptr<ControlPeer> MakeStaticPeer(TLabel& label, PeerContext& context,
                                                          FormWindow& form, HWND parent);
// A label and an image that their container paints.
[[nodiscard]] std::unique_ptr<ControlPeer> MakeLabelGraphic(TLabel& label, PeerContext& context,
                                                            ContainerWindow& container);
[[nodiscard]] std::unique_ptr<ControlPeer> MakeImageGraphic(TImage& image,
                                                            ContainerWindow& container);

// Panels, the page control and its pages.
[[nodiscard]] std::unique_ptr<ControlPeer> MakePanelPeer(TControl& panel, PeerContext& context,
                                                         FormWindow& form, HWND parent);

// The navigation bar, its groups, and their items.
[[nodiscard]] std::unique_ptr<ControlPeer> MakeGroupBarPeer(TGroupBar& bar, PeerContext& context,
                                                            FormWindow& form, HWND parent);
[[nodiscard]] std::unique_ptr<ControlPeer> MakeGroupPeer(TGroup& group, PeerContext& context,
                                                         FormWindow& form, HWND parent);
[[nodiscard]] std::unique_ptr<ControlPeer> MakeGroupItemPeer(TGroupItem& item, PeerContext& context,
                                                             FormWindow& form, HWND parent);

// The strip and the label of a group's header, which the group shows together.
[[nodiscard]] std::unique_ptr<ControlPeer> MakeHeaderPartPeer(const TGroup& group);

[[nodiscard]] std::unique_ptr<ImageListPeer> MakeImageListPeer();
// The image list behind a peer, null for null.
[[nodiscard]] HIMAGELIST ImagesOf(const TImageList* images);

}  // namespace tarvelin
