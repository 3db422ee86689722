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

class ButtonPeer : public WindowPeer<TButton> {
 public:
  ButtonPeer(TButton& button, const Site& site) : WindowPeer(button, site) {
    const DWORD style = button.isDefault ? BS_DEFPUSHBUTTON : BS_PUSHBUTTON;
    CreateSystem({WC_BUTTONW, WS_CHILD | WS_TABSTOP | style, 0, site.form.AddButton(button)});
  }

 protected:
  std::wstring WindowText() const override { return Literal(component_.Caption()); }

  std::optional<LRESULT> Reflected(UINT message, WPARAM wParam, LPARAM) override {
    if (message != WM_COMMAND || HIWORD(wParam) != BN_CLICKED) return std::nullopt;
    Run([this] { component_.Click(); });
    return 0;
  }
};

class CheckBoxPeer : public WindowPeer<TCheckBox> {
 public:
  CheckBoxPeer(TCheckBox& checkBox, const Site& site) : WindowPeer(checkBox, site) {
    CreateSystem({WC_BUTTONW, WS_CHILD | WS_TABSTOP | BS_AUTOCHECKBOX});
    Apply(Change::Checked);
  }

 protected:
  std::wstring WindowText() const override { return Literal(component_.Caption()); }

  void Apply(Change change) override {
    if (change == Change::Checked) {
      SendMessageW(Handle(), BM_SETCHECK, component_.Checked() ? BST_CHECKED : BST_UNCHECKED, 0);
    } else {
      WindowPeer::Apply(change);
    }
  }

  std::optional<LRESULT> Reflected(UINT message, WPARAM wParam, LPARAM) override {
    if (message != WM_COMMAND || HIWORD(wParam) != BN_CLICKED) return std::nullopt;
    const bool checked = SendMessageW(Handle(), BM_GETCHECK, 0, 0) == BST_CHECKED;
    Run([&] { component_.SetChecked(checked); });
    return 0;
  }
};

class EditPeer : public WindowPeer<TEdit> {
 public:
  EditPeer(TEdit& edit, const Site& site) : WindowPeer(edit, site) {
    CreateSystem({WC_EDITW, WS_CHILD | WS_TABSTOP | ES_AUTOHSCROLL, WS_EX_CLIENTEDGE});
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
    Report([this] { component_.UserTyped(TextOf(Handle())); });
    return 0;
  }
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

class StaticPeer : public WindowPeer<TLabel> {
 public:
  StaticPeer(TLabel& label, const Site& site) : WindowPeer(label, site) {
    CreateSystem({WC_STATICW, WS_CHILD | SS_LEFTNOWORDWRAP | SS_NOPREFIX});
    SendMessageW(Handle(), WM_SETFONT, reinterpret_cast<WPARAM>(Font()), FALSE);
  }

 protected:
  RECT WindowBounds() const override { return LabelArea(component_, Font()); }

  void Apply(Change change) override {
    WindowPeer::Apply(change);
    if (change == Change::Caption) WindowPeer::Apply(Change::Bounds);
  }

 private:
  HFONT Font() const { return site_.context.fonts.Of(component_.Style()); }
};

// A control that its container paints.
template <typename Shown>
class GraphicPeer : public ControlPeer, public Graphic {
 public:
  using Component = Shown;
  void Changed(Change) override { site_.parent->GraphicChanged(); }

 protected:
  GraphicPeer(Component& component, const Site& site) : component_(component), site_(site) {}

  Component& component_;
  const Site site_;
};

class LabelGraphic : public GraphicPeer<TLabel> {
 public:
  LabelGraphic(TLabel& label, const Site& site) : GraphicPeer(label, site) {}

  void PaintText(HDC dc) override {
    const HFONT font = site_.context.fonts.Of(component_.Style());
    DrawTextLine(dc, font, TextColor(kBlack), component_.Caption(), LabelArea(component_, font),
                 DT_TOP);
  }
};

class ImageGraphic : public GraphicPeer<TImage> {
 public:
  ImageGraphic(TImage& image, const Site& site)
      : GraphicPeer(image, site), bitmap_(image.Picture()) {}

  void Changed(Change change) override {
    if (change == Change::Picture) bitmap_ = PictureBitmap(component_.Picture());
    GraphicPeer::Changed(change);
  }

  void PaintGround(HDC dc) override {
    const RECT area = ToRect(component_.Bounds());
    if (SchemeColors() && component_.Bounds().height == 1) {
      return Fill(dc, area, GetSysColor(COLOR_BTNSHADOW));  // a line between parts of the window
    }
    // Text must stand on the scheme's own background to be readable.
    if (SchemeColors() && LiesUnderText()) return;
    bitmap_.Draw(dc, area, component_.stretch);
  }

 private:
  bool LiesUnderText() const {
    const RECT own = ToRect(component_.Bounds());
    return std::ranges::any_of(component_.Parent()->Controls(), [&](const TControl* sibling) {
      const RECT other = ToRect(sibling->Bounds());
      RECT common{};
      return dynamic_cast<const TLabel*>(sibling) && IntersectRect(&common, &own, &other);
    });
  }

  PictureBitmap bitmap_;
};

// Each window costs its part of the start, so a panel, which is always shown, has none; what it
// holds lies in the window around it.
class PanelGraphic : public GraphicPeer<TPanel> {
 public:
  PanelGraphic(TPanel& panel, const Site& site) : GraphicPeer(panel, site) {}

  void Changed(Change change) override {
    GraphicPeer::Changed(change);
    if (change != Change::Bounds && change != Change::Color) return;
    // The children lie elsewhere in the window now, or on another colour.
    for (const TControl* child : component_.Controls()) {
      if (child->Peer()) child->Peer()->Changed(change);
    }
  }

  void PaintGround(HDC dc) override {
    Fill(dc, ToRect(component_.Bounds()), BackgroundColor(component_.Color()));
    Paint(dc, &Graphic::PaintGround);
  }
  void PaintText(HDC dc) override { Paint(dc, &Graphic::PaintText); }

 private:
  void Paint(HDC dc, void (Graphic::*layer)(HDC)) {
    POINT former{};
    OffsetViewportOrgEx(dc, component_.Bounds().left, component_.Bounds().top, &former);
    PaintChildren(component_, dc, layer);
    SetViewportOrgEx(dc, former.x, former.y, nullptr);
  }
};

// A container whose children stand before and behind each other, or are shown and hidden together.
class ContainerPeer : public WindowPeer<TControl, ContainerWindow> {
 public:
  ContainerPeer(TControl& container, const Site& site) : WindowPeer(container, site) {
    if (container.Visible()) CreateContainer();
  }

 protected:
  void CreateContainer() override {
    CreateOwn(
        {L"TarvelinContainer", WS_CHILD | WS_CLIPCHILDREN | WS_CLIPSIBLINGS, WS_EX_CONTROLPARENT});
  }
};

}  // namespace

std::unique_ptr<ControlPeer> MakeControlPeer(TControl& control, const Site& site) {
  const auto* label = dynamic_cast<const TLabel*>(&control);
  if (label && label->namesNext) return MakePeerIf<StaticPeer>(control, site);
  return MakePeerOf<ButtonPeer, CheckBoxPeer, EditPeer, LabelGraphic, ImageGraphic, PanelGraphic,
                    ContainerPeer>(control, site);
}

}  // namespace tarvelin
