#include "widgets/peers_win.h"

#include "widgets/controls_win.h"
#include "widgets/form_win.h"

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

constexpr auto kMakers = {MakeNavigationPeer, MakeListPeer, MakeControlPeer};

void AttachChildren(const TControl& parent, const Site& site) {
  for (TControl* control : parent.Controls()) {
    for (const auto make : kMakers) {
      if (auto peer = make(*control, site)) {
        control->SetPeer(std::move(peer));
        break;
      }
    }
    auto* inner = dynamic_cast<ContainerWindow*>(control->Peer());
    const Site within{site.context, site.form, inner ? inner : site.parent};
    if (!inner || control->Visible()) {
      AttachChildren(*control, within);
    } else {
      inner->FillWhenShown([control, within] { AttachChildren(*control, within); });
    }
  }
}

}  // namespace

void AttachPeers(TForm& form, PeerContext& context, const FormFrame& frame) {
  AttachImageLists(form);
  auto peer = std::make_unique<FormWindow>(form, context, frame);
  FormWindow& window = *peer;
  form.SetPeer(std::move(peer));
  try {
    AttachChildren(form, {context, window, &window});
  } catch (const std::exception&) {
    form.SetPeer(nullptr);
    throw;
  }
}

}  // namespace tarvelin
