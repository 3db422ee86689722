#include "widgets/accessible_win.h"

#include <windows.h>
// After windows.h, on which it depends.
#include <oleacc.h>

#include <string>
#include <utility>

#include "common/handles_win.h"

namespace tarvelin {

namespace {

struct AccessibleTraits : NullHandleTraits<IAccessible*> {
  static void Close(IAccessible* object) { object->Release(); }
};
using UniqueAccessible = UniqueHandle<AccessibleTraits>;

// The system's object of a window with a further state. It lives as long as somebody refers to it.
class ControlAccessible final : public IAccessible, public IOleWindow {
 public:
  ControlAccessible(HWND window, UniqueAccessible standard, std::shared_ptr<const long> added)
      : window_(window), standard_(std::move(standard)), added_(std::move(added)) {}

  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID wanted, void** object) override {
    if (!object) return E_POINTER;
    *object = nullptr;
    if (IsEqualIID(wanted, __uuidof(IOleWindow))) {
      *object = static_cast<IOleWindow*>(this);
    } else if (IsEqualIID(wanted, __uuidof(IUnknown)) || IsEqualIID(wanted, __uuidof(IDispatch)) ||
               IsEqualIID(wanted, __uuidof(IAccessible))) {
      *object = static_cast<IAccessible*>(this);
    } else {
      return E_NOINTERFACE;
    }
    AddRef();
    return S_OK;
  }
  ULONG STDMETHODCALLTYPE AddRef() override {
    return static_cast<ULONG>(InterlockedIncrement(&references_));
  }
  ULONG STDMETHODCALLTYPE Release() override {
    const LONG left = InterlockedDecrement(&references_);
    if (left == 0) delete this;
    return static_cast<ULONG>(left);
  }

  HRESULT STDMETHODCALLTYPE get_accState(VARIANT child, VARIANT* state) override {
    const HRESULT result = standard_.Get()->get_accState(child, state);
    const bool self = child.vt == VT_I4 && child.lVal == CHILDID_SELF;
    if (SUCCEEDED(result) && self && state->vt == VT_I4) state->lVal |= *added_;
    return result;
  }

  // IOleWindow, by which the window of an object is found (WindowFromAccessibleObject).
  HRESULT STDMETHODCALLTYPE GetWindow(HWND* window) override {
    if (!window) return E_POINTER;
    *window = window_;
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE ContextSensitiveHelp(BOOL) override { return E_NOTIMPL; }

  // Everything else is the system's.
  HRESULT STDMETHODCALLTYPE get_accParent(IDispatch** parent) override {
    return standard_.Get()->get_accParent(parent);
  }
  HRESULT STDMETHODCALLTYPE get_accChildCount(long* count) override {
    return standard_.Get()->get_accChildCount(count);
  }
  HRESULT STDMETHODCALLTYPE get_accChild(VARIANT child, IDispatch** object) override {
    return standard_.Get()->get_accChild(child, object);
  }
  HRESULT STDMETHODCALLTYPE get_accName(VARIANT child, BSTR* name) override {
    return standard_.Get()->get_accName(child, name);
  }
  HRESULT STDMETHODCALLTYPE get_accValue(VARIANT child, BSTR* value) override {
    return standard_.Get()->get_accValue(child, value);
  }
  HRESULT STDMETHODCALLTYPE get_accDescription(VARIANT child, BSTR* description) override {
    return standard_.Get()->get_accDescription(child, description);
  }
  HRESULT STDMETHODCALLTYPE get_accRole(VARIANT child, VARIANT* role) override {
    return standard_.Get()->get_accRole(child, role);
  }
  HRESULT STDMETHODCALLTYPE get_accHelp(VARIANT child, BSTR* help) override {
    return standard_.Get()->get_accHelp(child, help);
  }
  HRESULT STDMETHODCALLTYPE get_accHelpTopic(BSTR* file, VARIANT child, long* topic) override {
    return standard_.Get()->get_accHelpTopic(file, child, topic);
  }
  HRESULT STDMETHODCALLTYPE get_accKeyboardShortcut(VARIANT child, BSTR* key) override {
    return standard_.Get()->get_accKeyboardShortcut(child, key);
  }
  HRESULT STDMETHODCALLTYPE get_accFocus(VARIANT* child) override {
    return standard_.Get()->get_accFocus(child);
  }
  HRESULT STDMETHODCALLTYPE get_accSelection(VARIANT* children) override {
    return standard_.Get()->get_accSelection(children);
  }
  HRESULT STDMETHODCALLTYPE get_accDefaultAction(VARIANT child, BSTR* action) override {
    return standard_.Get()->get_accDefaultAction(child, action);
  }
  HRESULT STDMETHODCALLTYPE accSelect(long flags, VARIANT child) override {
    return standard_.Get()->accSelect(flags, child);
  }
  HRESULT STDMETHODCALLTYPE accLocation(long* left, long* top, long* width, long* height,
                                        VARIANT child) override {
    return standard_.Get()->accLocation(left, top, width, height, child);
  }
  HRESULT STDMETHODCALLTYPE accNavigate(long direction, VARIANT start, VARIANT* end) override {
    return standard_.Get()->accNavigate(direction, start, end);
  }
  HRESULT STDMETHODCALLTYPE accHitTest(long left, long top, VARIANT* child) override {
    return standard_.Get()->accHitTest(left, top, child);
  }
  HRESULT STDMETHODCALLTYPE accDoDefaultAction(VARIANT child) override {
    return standard_.Get()->accDoDefaultAction(child);
  }
  HRESULT STDMETHODCALLTYPE put_accName(VARIANT child, BSTR name) override {
    return standard_.Get()->put_accName(child, name);
  }
  HRESULT STDMETHODCALLTYPE put_accValue(VARIANT child, BSTR value) override {
    return standard_.Get()->put_accValue(child, value);
  }
  HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT* count) override {
    return standard_.Get()->GetTypeInfoCount(count);
  }
  HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT index, LCID locale, ITypeInfo** info) override {
    return standard_.Get()->GetTypeInfo(index, locale, info);
  }
  HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID reserved, LPOLESTR* names, UINT count, LCID locale,
                                          DISPID* ids) override {
    return standard_.Get()->GetIDsOfNames(reserved, names, count, locale, ids);
  }
  HRESULT STDMETHODCALLTYPE Invoke(DISPID member, REFIID reserved, LCID locale, WORD flags,
                                   DISPPARAMS* parameters, VARIANT* result, EXCEPINFO* exception,
                                   UINT* argument) override {
    return standard_.Get()->Invoke(member, reserved, locale, flags, parameters, result, exception,
                                   argument);
  }

 private:
  ~ControlAccessible() = default;

  LONG references_ = 1;
  HWND window_;
  UniqueAccessible standard_;
  std::shared_ptr<const long> added_;
};

}  // namespace

Accessibility::~Accessibility() {
  // The library stays: an assistive program may hold an object of it to the end of the process.
  if (com_) CoUninitialize();
}

void Accessibility::Load() {
  if (std::exchange(loaded_, true)) return;
  std::wstring path(MAX_PATH, L'\0');
  path.resize(GetSystemDirectoryW(path.data(), static_cast<UINT>(path.size())));
  library_ =
      LoadLibraryExW((path + L"\\oleacc.dll").c_str(), nullptr, LOAD_WITH_ALTERED_SEARCH_PATH);
  // Objects that cross to another process need it.
  com_ = SUCCEEDED(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED));
}

LRESULT Accessibility::ObjectFor(HWND window, WPARAM wParam, std::shared_ptr<const long> added) {
  Load();
  const auto create =
      FindExport<decltype(&CreateStdAccessibleObject)>(library_, "CreateStdAccessibleObject");
  const auto answer = FindExport<decltype(&LresultFromObject)>(library_, "LresultFromObject");
  if (!create || !answer) return 0;
  void* standard = nullptr;
  const auto part = static_cast<LONG>(OBJID_CLIENT);
  if (FAILED(create(window, part, __uuidof(IAccessible), &standard)) || !standard) return 0;
  const UniqueAccessible object(new ControlAccessible(
      window, UniqueAccessible(static_cast<IAccessible*>(standard)), std::move(added)));
  return answer(__uuidof(IAccessible), wParam, object.Get());
}

}  // namespace tarvelin
