#include "widgets/peers_win.h"

#include <algorithm>

#include "widgets/PImageNote.h"
#include "widgets/controls_win.h"
#include "widgets/form_win.h"
#include "widgets/navigation.h"

namespace tarvelin {

namespace {

void AttachImageLists(const TComponent& owner) {
  for (const auto& component : owner.Components()) {
    if (auto* images = dynamic_cast<TImageList*>(component.get())) {
      images->SetPeer(MakeImageListPeer());
    }
    AttachImageLists(*component);
  }
}

bool HoldsPictures(const TControl& container) {
  return std::ranges::any_of(container.Controls(), [](const TControl* control) {
    return dynamic_cast<const TImage*>(control) != nullptr;
  });
}

std::unique_ptr<ControlPeer> MakePeer(TControl& control, PeerContext& context, FormWindow& form,
                                      ContainerWindow& container) {
  const HWND parent = container.Handle();
  if (auto* button = dynamic_cast<TButton*>(&control)) {
    return MakeButtonPeer(*button, context, form, parent);
  }
  if (auto* checkBox = dynamic_cast<TCheckBox*>(&control)) {
    return MakeCheckBoxPeer(*checkBox, context, form, parent);
  }
  if (auto* edit = dynamic_cast<TEdit*>(&control)) {
    return MakeEditPeer(*edit, context, form, parent);
  }
  if (auto* list = dynamic_cast<TListView*>(&control)) {
    return MakeListViewPeer(*list, context, form, parent);
  }
  if (const auto* group = dynamic_cast<TGroup*>(control.Parent());
      group && (&control == group->HeaderImage() || &control == group->HeaderLabel())) {
    return MakeHeaderPartPeer(*group);
  }
  if (auto* image = dynamic_cast<TImage*>(&control)) return MakeImageGraphic(*image, container);
  if (auto* label = dynamic_cast<TLabel*>(&control)) {
    return HoldsPictures(*control.Parent()) ? MakeLabelGraphic(*label, context, container)
                                            : MakeStaticPeer(*label, context, form, parent);
  }
  if (auto* item = dynamic_cast<TGroupItem*>(&control)) {
    return MakeGroupItemPeer(*item, context, form, parent);
  }
  if (auto* group = dynamic_cast<TGroup*>(&control)) {
    return MakeGroupPeer(*group, context, form, parent);
  }
  if (auto* bar = dynamic_cast<TGroupBar*>(&control)) {
    return MakeGroupBarPeer(*bar, context, form, parent);
  }
  return MakePanelPeer(control, context, form, parent);
}

void AttachChildren(const TControl& parent, PeerContext& context, FormWindow& form,
                    ContainerWindow& container) {
  for (TControl* control : parent.Controls()) {
    control->SetPeer(MakePeer(*control, context, form, container));
    if (auto* inner = dynamic_cast<ContainerWindow*>(control->Peer())) {
      AttachChildren(*control, context, form, *inner);
    }
  }
}

}  // namespace

void AttachPeers(TForm& form, PeerContext& context, const FormFrame& frame) {
  AttachImageLists(form);
  auto peer = std::make_unique<FormWindow>(form, context, frame);
  FormWindow& window = *peer;
  form.SetPeer(std::move(peer));
  AttachChildren(form, context, window, window);
}

HWND WindowOf(const TControl& control) {
  const auto* window = dynamic_cast<const Window*>(control.Peer());
  return window ? window->Handle() : nullptr;
}

}  // namespace tarvelin
