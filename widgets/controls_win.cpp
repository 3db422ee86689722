#include "widgets/controls_win.h"

#include <windows.h>

#include <commctrl.h>

#include <algorithm>
#include <iterator>

namespace tarvelin {

std::wstring Literal(const std::wstring& caption) {
  std::wstring text;
  for (const wchar_t character : caption) {
    if (character == L'&') text += L'&';
    text += character;
  }
  return text;
}

namespace {

std::wstring TextOf(HWND window) {
  std::wstring text(static_cast<std::size_t>(GetWindowTextLengthW(window)) + 1, L'\0');
  const int length = GetWindowTextW(window, text.data(), static_cast<int>(text.size()));
  text.resize(static_cast<std::size_t>(std::max(length, 0)));
  return text;
}

class ButtonPeer : public WindowPeer<ControlPeer> {
 public:
  ButtonPeer(TButton& button, PeerContext& context, FormWindow& form, HWND parent)
      : WindowPeer(button, context, &form), button_(button) {
    const DWORD style = button.isDefault ? BS_DEFPUSHBUTTON : BS_PUSHBUTTON;
    CreateSystem({WC_BUTTONW, WS_CHILD | WS_TABSTOP | style, 0, parent, form.AddButton(button)});
  }

 protected:
  std::wstring WindowText() const override { return Literal(button_.Caption()); }

  std::optional<LRESULT> Reflected(UINT message, WPARAM wParam, LPARAM) override {
    if (message != WM_COMMAND || HIWORD(wParam) != BN_CLICKED) return std::nullopt;
    Run([this] { button_.Click(); });
    return 0;
  }

 private:
  TButton& button_;
};

class CheckBoxPeer : public WindowPeer<ControlPeer> {
 public:
  CheckBoxPeer(TCheckBox& checkBox, PeerContext& context, FormWindow& form, HWND parent)
      : WindowPeer(checkBox, context, &form), checkBox_(checkBox) {
    CreateSystem(
        {WC_BUTTONW, WS_CHILD | WS_TABSTOP | BS_AUTOCHECKBOX, 0, parent, form.AddControl()});
    Apply(Change::Checked);
  }

 protected:
  std::wstring WindowText() const override { return Literal(checkBox_.Caption()); }

  void Apply(Change change) override {
    if (change == Change::Checked) {
      SendMessageW(Handle(), BM_SETCHECK, checkBox_.Checked() ? BST_CHECKED : BST_UNCHECKED, 0);
    } else {
      WindowPeer::Apply(change);
    }
  }

  std::optional<LRESULT> Reflected(UINT message, WPARAM wParam, LPARAM) override {
    if (message != WM_COMMAND || HIWORD(wParam) != BN_CLICKED) return std::nullopt;
    const bool checked = SendMessageW(Handle(), BM_GETCHECK, 0, 0) == BST_CHECKED;
    Run([&] { checkBox_.SetChecked(checked); });
    return 0;
  }

 private:
  TCheckBox& checkBox_;
};

class EditPeer : public WindowPeer<ControlPeer> {
 public:
  EditPeer(TEdit& edit, PeerContext& context, FormWindow& form, HWND parent)
      : WindowPeer(edit, context, &form), edit_(edit) {
    CreateSystem({WC_EDITW, WS_CHILD | WS_TABSTOP | ES_AUTOHSCROLL, WS_EX_CLIENTEDGE, parent,
                  form.AddControl()});
    SendMessageW(Handle(), EM_SETLIMITTEXT, 0, 0);
  }

 protected:
  LRESULT Process(UINT message, WPARAM wParam, LPARAM lParam) override {
    // A box of one line would answer Enter and Escape with a beep.
    if (message == WM_CHAR && (wParam == VK_RETURN || wParam == VK_ESCAPE)) return 0;
    return WindowPeer::Process(message, wParam, lParam);
  }

  std::optional<LRESULT> Reflected(UINT message, WPARAM wParam, LPARAM) override {
    if (message != WM_COMMAND || HIWORD(wParam) != EN_CHANGE) return std::nullopt;
    Report([this] { edit_.UserTyped(TextOf(Handle())); });
    return 0;
  }

 private:
  TEdit& edit_;
};

// The place of a label: a translated caption may need more room than the one that the label was
// laid out for, and takes it up to the edge of the container.
RECT LabelArea(const TLabel& label, HFONT font) {
  RECT area = ToRect(label.Bounds());
  const LONG edge = label.Parent() ? label.Parent()->Bounds().width : area.right;
  const LONG needed = area.left + TextExtent(font, label.Caption()).cx;
  area.right = std::max(area.right, std::min(needed, edge));
  return area;
}

class StaticPeer : public WindowPeer<ControlPeer> {
 public:
  StaticPeer(TLabel& label, PeerContext& context, FormWindow& form, HWND parent)
      : WindowPeer(label, context, &form), label_(label) {
    CreateSystem(
        {WC_STATICW, WS_CHILD | SS_LEFTNOWORDWRAP | SS_NOPREFIX, 0, parent, form.AddControl()});
    SendMessageW(Handle(), WM_SETFONT, reinterpret_cast<WPARAM>(Font()), FALSE);
  }

 protected:
  RECT WindowBounds() const override { return LabelArea(label_, Font()); }

  void Apply(Change change) override {
    WindowPeer::Apply(change);
    if (change == Change::Caption) WindowPeer::Apply(Change::Bounds);
  }

 private:
  HFONT Font() const { return context_.fonts.Of(label_.Style()); }

  TLabel& label_;
};

class LabelGraphic : public ControlPeer, public Graphic {
 public:
  LabelGraphic(TLabel& label, PeerContext& context, ContainerWindow& container)
      : label_(label), context_(context), container_(container) {}

  void Changed(Change) override { container_.GraphicChanged(); }

  void Draw(HDC dc) override {
    const HFONT font = context_.fonts.Of(label_.Style());
    DrawTextLine(dc, font, TextColor(label_.FontColor()), label_.Caption(), LabelArea(label_, font),
                 DT_TOP);
  }

 private:
  TLabel& label_;
  PeerContext& context_;
  ContainerWindow& container_;
};

class ImageGraphic : public ControlPeer, public Graphic {
 public:
  ImageGraphic(TImage& image, ContainerWindow& container)
      : image_(image), container_(container), bitmap_(image.Picture()) {}

  void Changed(Change change) override {
    if (change == Change::Picture) bitmap_ = PictureBitmap(image_.Picture());
    container_.GraphicChanged();
  }

  void Draw(HDC dc) override {
    // Text must stand on the scheme's own background to be readable.
    if (HighContrast() && LiesUnderText()) return;
    bitmap_.Draw(dc, ToRect(image_.Bounds()), image_.stretch);
  }

 private:
  bool LiesUnderText() const {
    const RECT own = ToRect(image_.Bounds());
    return std::ranges::any_of(image_.Parent()->Controls(), [&](const TControl* sibling) {
      const RECT other = ToRect(sibling->Bounds());
      RECT common{};
      return dynamic_cast<const TLabel*>(sibling) && IntersectRect(&common, &own, &other);
    });
  }

  TImage& image_;
  ContainerWindow& container_;
  PictureBitmap bitmap_;
};

class PanelPeer : public WindowPeer<ControlPeer, ContainerWindow> {
 public:
  PanelPeer(TControl& panel, PeerContext& context, FormWindow& form, HWND parent)
      : WindowPeer(panel, context, &form) {
    CreateOwn({L"TarvelinPanel", WS_CHILD | WS_CLIPCHILDREN | WS_CLIPSIBLINGS, WS_EX_CONTROLPARENT,
               parent, form.AddControl()});
  }
};

}  // namespace

std::unique_ptr<ControlPeer> MakeButtonPeer(TButton& button, PeerContext& context, FormWindow& form,
                                            HWND parent) {
  return std::make_unique<ButtonPeer>(button, context, form, parent);
}

std::unique_ptr<ControlPeer> MakeCheckBoxPeer(TCheckBox& checkBox, PeerContext& context,
                                              FormWindow& form, HWND parent) {
  return std::make_unique<CheckBoxPeer>(checkBox, context, form, parent);
}

std::unique_ptr<ControlPeer> MakeEditPeer(TEdit& edit, PeerContext& context, FormWindow& form,
                                          HWND parent) {
  return std::make_unique<EditPeer>(edit, context, form, parent);
}

std::unique_ptr<ControlPeer> MakeStaticPeer(TLabel& label, PeerContext& context, FormWindow& form,
                                            HWND parent) {
  return std::make_unique<StaticPeer>(label, context, form, parent);
}

std::unique_ptr<ControlPeer> MakeLabelGraphic(TLabel& label, PeerContext& context,
                                              ContainerWindow& container) {
  return std::make_unique<LabelGraphic>(label, context, container);
}

std::unique_ptr<ControlPeer> MakeImageGraphic(TImage& image, ContainerWindow& container) {
  return std::make_unique<ImageGraphic>(image, container);
}

std::unique_ptr<ControlPeer> MakePanelPeer(TControl& panel, PeerContext& context, FormWindow& form,
                                           HWND parent) {
  return std::make_unique<PanelPeer>(panel, context, form, parent);
}

}  // namespace tarvelin
