#include "bench/floors_win.h"

// After windows.h, on which they depend.
#include <commctrl.h>
#include <shellapi.h>

#include <map>
#include <set>
#include <vector>

#include "common/handles_win.h"

namespace tarvelin::bench {
namespace {

// Read of a key instead of a value of that name: the names of all its subkeys or values.
constexpr const wchar_t* kSubkeys = L"\1";
constexpr const wchar_t* kValues = L"\2";

// A key that is opened for each entry, and what is read there. In the path "%" is the entry's name
// and "?" the first text that was read for it. An entry whose key is missing is skipped.
struct Step {
  HKEY root;
  const wchar_t* path;
  std::vector<const wchar_t*> reads{L""};
  bool mayBeMissing = false;
};

struct Walk {
  // The key whose subkeys or values are the entries; without a path there is one entry.
  HKEY root = nullptr;
  const wchar_t* path = nullptr;
  std::vector<Step> steps{};
  const wchar_t* prefix = L"";  // of the names that count
  bool ofValues = false;
  // The last text is a module.
  bool mustExist = false;
  std::vector<const wchar_t*> versionTexts{};
};

constexpr const wchar_t* kClass = L"CLSID\\%";
constexpr const wchar_t* kModule = L"CLSID\\%\\InprocServer32";
constexpr const wchar_t* kMachineClass = L"SOFTWARE\\Classes\\CLSID\\%";
constexpr const wchar_t* kUserMain = L"Software\\Microsoft\\Internet Explorer\\Main";
constexpr const wchar_t* kSearchUrl = L"Software\\Microsoft\\Internet Explorer\\SearchUrl";

const std::map<std::wstring, std::vector<Walk>> kWalks{
    {L"shell",
     {{HKEY_CLASSES_ROOT, L"*\\shell", {{HKEY_CLASSES_ROOT, L"*\\shell\\%\\Command"}}},
      {HKEY_CLASSES_ROOT,
       L"*\\shellex\\ContextMenuHandlers",
       {{HKEY_CLASSES_ROOT, L"*\\shellex\\ContextMenuHandlers\\%"}}},
      {HKEY_CLASSES_ROOT, L"CLSID\\{645FF040-5081-101B-9F08-00AA002F954E}\\Shell"},
      {HKEY_CLASSES_ROOT,
       L"Directory\\shell",
       {{HKEY_CLASSES_ROOT, L"Directory\\shell\\%"},
        {HKEY_CLASSES_ROOT, L"Directory\\shell\\%\\command"}}},
      {HKEY_CLASSES_ROOT, L"Directory\\shellex\\ContextMenuHandlers"},
      {HKEY_CLASSES_ROOT, L"Folder\\shellex\\ContextMenuHandlers"},
      {HKEY_CLASSES_ROOT, L"Drive\\shellex\\ContextMenuHandlers"}}},
    {L"new",
     {{HKEY_CLASSES_ROOT,
       L"",
       {{HKEY_CLASSES_ROOT, L"%"},
        {HKEY_CLASSES_ROOT, L"%\\?\\ShellNew", {kValues}, true},
        {HKEY_CLASSES_ROOT, L"%\\ShellNew", {kValues}},
        {HKEY_LOCAL_MACHINE, L"SOFTWARE\\Classes\\?"},
        {HKEY_CLASSES_ROOT, L"?\\DefaultIcon"}},
       L"."}}},
    {L"menus",
     {{HKEY_CURRENT_USER,
       L"Software\\Microsoft\\Internet Explorer\\MenuExt",
       // The parent is looked for again before each entry.
       {{HKEY_CURRENT_USER, L"Software\\Microsoft\\Internet Explorer\\MenuExt", {}},
        {HKEY_CURRENT_USER, L"Software\\Microsoft\\Internet Explorer\\MenuExt\\%"}}}}},
    {L"bars",
     {{HKEY_LOCAL_MACHINE,
       L"SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Shell Extensions\\Approved",
       {},
       L"",
       true},
      {HKEY_CURRENT_USER,
       L"Software\\Microsoft\\Internet Explorer\\Explorer Bars",
       {{HKEY_CURRENT_USER,
         L"Software\\Microsoft\\Internet Explorer\\Explorer Bars\\%",
         {kSubkeys}},
        {HKEY_CLASSES_ROOT, kClass},
        {HKEY_CLASSES_ROOT, kModule}},
       L"",
       false,
       false,
       {L"CompanyName"}}}},
    {L"toolbars",
     {{HKEY_LOCAL_MACHINE,
       L"SOFTWARE\\Microsoft\\Internet Explorer\\Toolbar",
       {{HKEY_CLASSES_ROOT, kClass}, {HKEY_CLASSES_ROOT, kModule}},
       L"",
       true,
       false,
       {L"CompanyName"}}}},
    {L"buttons",
     {{HKEY_LOCAL_MACHINE,
       L"SOFTWARE\\Microsoft\\Internet Explorer\\Extensions",
       {{HKEY_LOCAL_MACHINE,
         L"SOFTWARE\\Microsoft\\Internet Explorer\\Extensions\\%",
         {L"MenuText", L"Exec"}}}}}},
    {L"helpers",
     {{HKEY_CURRENT_USER,
       L"Software\\Microsoft\\Windows\\CurrentVersion\\Ext\\Stats",
       {{HKEY_CURRENT_USER,
         L"Software\\Microsoft\\Windows\\CurrentVersion\\Ext\\Stats\\%\\iexplore",
         {L"Type"}},
        {HKEY_LOCAL_MACHINE, kMachineClass},
        {HKEY_CLASSES_ROOT, kClass},
        {HKEY_CLASSES_ROOT, kModule}},
       L"",
       false,
       true,
       {L"CompanyName", L"FileDescription"}}}},
    {L"activex",
     {{HKEY_LOCAL_MACHINE,
       L"SOFTWARE\\Microsoft\\Code Store Database\\Distribution Units",
       {{HKEY_LOCAL_MACHINE, kMachineClass}, {HKEY_CLASSES_ROOT, kModule}},
       L"{",
       false,
       true,
       {L"CompanyName", L"FileDescription"}}}},
    {L"settings",
     {{nullptr,
       nullptr,
       {{HKEY_CURRENT_USER,
         kUserMain,
         {L"Start Page", L"Search Page", L"Default_Page_URL", L"Local Page", L"Search Bar",
          L"Default_Search_URL"}},
        {HKEY_CURRENT_USER, kSearchUrl},
        {HKEY_LOCAL_MACHINE,
         kUserMain,
         {L"Start Page", L"Search Page", L"Default_Page_URL", L"Local Page", L"Search Bar",
          L"Default_Search_URL"}},
        {HKEY_LOCAL_MACHINE, kSearchUrl},
        {HKEY_LOCAL_MACHINE,
         L"Software\\Microsoft\\Internet Explorer\\Search",
         {L"CustomizeSearch", L"SearchAssistant"}},
        {HKEY_LOCAL_MACHINE,
         L"Software\\Microsoft\\Internet Explorer\\AboutURLs",
         {L"blank", L"DesktopItemNavigationFailure", L"NavigationCanceled", L"NavigationFailure",
          L"OfflineInformation", L"PostNotCached"}}}}}},
};

std::vector<std::wstring> Names(HKEY key, bool ofValues) {
  const auto enumerate = ofValues ? [](HKEY from, DWORD index, wchar_t* name, DWORD* size) {
    return RegEnumValueW(from, index, name, size, nullptr, nullptr, nullptr, nullptr);
  } : [](HKEY from, DWORD index, wchar_t* name, DWORD* size) {
    return RegEnumKeyExW(from, index, name, size, nullptr, nullptr, nullptr, nullptr);
  };
  std::vector<std::wstring> names;
  wchar_t name[256];
  for (DWORD size = 256;
       enumerate(key, static_cast<DWORD>(names.size()), name, &size) == ERROR_SUCCESS; size = 256) {
    names.emplace_back(name, size);
  }
  return names;
}

UniqueRegistryKey OpenKey(HKEY root, const std::wstring& path) {
  UniqueRegistryKey key;
  RegOpenKeyExW(root, path.c_str(), 0, KEY_READ, key.Put());
  return key;
}

std::wstring ReadText(HKEY key, const wchar_t* name) {
  wchar_t text[512] = L"";
  DWORD size = sizeof text - sizeof(wchar_t);
  RegQueryValueExW(key, name, nullptr, nullptr, reinterpret_cast<BYTE*>(text), &size);
  return text;
}

std::wstring Fill(const wchar_t* path, const std::wstring& name, const std::wstring& text) {
  std::wstring filled;
  for (; *path; ++path) {
    if (*path == L'%') {
      filled += name;
    } else if (*path == L'?') {
      filled += text;
    } else {
      filled += *path;
    }
  }
  return filled;
}

void ReadVersion(const std::wstring& module, const std::vector<const wchar_t*>& texts) {
  DWORD unused = 0;
  std::vector<BYTE> block(GetFileVersionInfoSizeW(module.c_str(), &unused));
  if (block.empty() ||
      !GetFileVersionInfoW(module.c_str(), 0, static_cast<DWORD>(block.size()), block.data())) {
    return;
  }
  void* value = nullptr;
  UINT length = 0;
  VerQueryValueW(block.data(), L"\\VarFileInfo\\Translation", &value, &length);
  for (const wchar_t* text : texts) {
    VerQueryValueW(block.data(), (L"\\StringFileInfo\\040904B0\\" + std::wstring(text)).c_str(),
                   &value, &length);
  }
}

bool Passes(const Walk& walk, const std::wstring& name) {
  std::wstring first;
  std::wstring last;
  for (const Step& step : walk.steps) {
    const auto key = OpenKey(step.root, Fill(step.path, name, first));
    if (!key && !step.mayBeMissing) return false;
    for (const wchar_t* read : step.reads) {
      if (!key) break;
      if (read == kSubkeys || read == kValues) {
        (void)Names(key.Get(), read == kValues);
        continue;
      }
      last = ReadText(key.Get(), read);
      if (first.empty()) first = last;
    }
  }
  if (walk.mustExist && GetFileAttributesW(last.c_str()) == INVALID_FILE_ATTRIBUTES) return false;
  if (!walk.versionTexts.empty()) ReadVersion(last, walk.versionTexts);
  return true;
}

// The enumeration, a look at the message queue for each entry, and the icon of each type once.
int SendToFloor(HIMAGELIST images) {
  WIN32_FIND_DATAW entry{};
  std::set<std::wstring> types;
  int count = 0;
  const UniqueFind search(FindFirstFileW((kSendTo + L"*.*").c_str(), &entry));
  if (!search) return 0;
  do {
    MSG message;
    while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) DispatchMessageW(&message);
    const std::wstring name = entry.cFileName;
    if (name == L"." || name == L"..") continue;
    ++count;
    if (!types.insert(name.substr(name.rfind(L'.'))).second) continue;
    SHFILEINFOW info{};
    SHGetFileInfoW(name.c_str(), FILE_ATTRIBUTE_NORMAL, &info, sizeof info,
                   SHGFI_ICON | SHGFI_USEFILEATTRIBUTES | SHGFI_SMALLICON);
    const UniqueIcon icon(info.hIcon);
    if (images) ImageList_ReplaceIcon(images, -1, icon.Get());
  } while (FindNextFileW(search.Get(), &entry));
  return count;
}

LRESULT CALLBACK BareWindow(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
  if (message == WM_NOTIFY && reinterpret_cast<NMHDR*>(lParam)->code == LVN_GETDISPINFOW) {
    LVITEMW& item = reinterpret_cast<NMLVDISPINFOW*>(lParam)->item;
    const auto* text = reinterpret_cast<const CellText*>(GetWindowLongPtrW(window, GWLP_USERDATA));
    if (item.mask & LVIF_STATE) item.state = INDEXTOSTATEIMAGEMASK(1);
    if ((item.mask & LVIF_TEXT) && text) {
      const auto room = static_cast<std::size_t>(item.cchTextMax) - 1;
      item.pszText[(*text)(item.iItem, item.iSubItem).copy(item.pszText, room)] = L'\0';
    }
    return 0;
  }
  return DefWindowProcW(window, message, wParam, lParam);
}

}  // namespace

int ScanFloor(const std::wstring& scan, HIMAGELIST images) {
  if (scan == L"sendto") return SendToFloor(images);
  int passed = 0;
  for (const Walk& walk : kWalks.at(scan)) {
    std::vector<std::wstring> names{L""};
    if (walk.path) names = Names(OpenKey(walk.root, walk.path).Get(), walk.ofValues);
    if (walk.steps.empty()) continue;
    for (const std::wstring& name : names) {
      if (name.starts_with(walk.prefix)) passed += Passes(walk, name);
    }
  }
  if (scan == L"new") {
    for (int number = 0; number < kFiles; ++number) {
      const std::wstring file = kFolder + std::to_wstring(10 + number) + L".ico";
      // A location may be the name of a file as a whole.
      if (GetFileAttributesW((file + L",00").c_str()) != INVALID_FILE_ATTRIBUTES) return 0;
      if (GetFileAttributesW(file.c_str()) == INVALID_FILE_ATTRIBUTES) return 0;
      const UniqueIcon icon(ExtractIconW(GetModuleHandleW(nullptr), file.c_str(), 0));
      if (images) ImageList_ReplaceIcon(images, -1, icon.Get());
    }
  }
  return passed;
}

BareList::BareList() : images_(ImageList_Create(16, 16, ILC_COLOR32 | ILC_MASK, 50, 50)) {
  WNDCLASSW type{};
  type.lpfnWndProc = BareWindow;
  type.lpszClassName = L"BareList";
  RegisterClassW(&type);
  window_ = CreateWindowExW(0, type.lpszClassName, L"Bare", WS_OVERLAPPEDWINDOW | WS_VISIBLE, 0, 0,
                            600, 430, nullptr, nullptr, nullptr, nullptr);
  const DWORD style =
      WS_CHILD | WS_VISIBLE | LVS_REPORT | LVS_SINGLESEL | LVS_SHOWSELALWAYS | LVS_OWNERDATA;
  list_ = CreateWindowExW(0, WC_LISTVIEWW, L"", style, 0, 0, 600, 400, window_, nullptr, nullptr,
                          nullptr);
  SendMessageW(list_, LVM_SETEXTENDEDLISTVIEWSTYLE, 0, LVS_EX_FULLROWSELECT);
  LVCOLUMNW column{};
  column.mask = LVCF_WIDTH;
  column.cx = 180;
  for (int i = 0; i < 3; ++i) {
    SendMessageW(list_, LVM_INSERTCOLUMNW, static_cast<WPARAM>(i),
                 reinterpret_cast<LPARAM>(&column));
  }
}

void BareList::Show(int rows, bool checkBoxes, const CellText& text) {
  SetWindowLongPtrW(window_, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(&text));
  if (checkBoxes) {
    SendMessageW(list_, LVM_SETCALLBACKMASK, LVIS_STATEIMAGEMASK, 0);
    SendMessageW(list_, LVM_SETEXTENDEDLISTVIEWSTYLE, LVS_EX_CHECKBOXES, LVS_EX_CHECKBOXES);
  }
  SendMessageW(list_, LVM_SETITEMCOUNT, static_cast<WPARAM>(rows), 0);
  UpdateWindow(list_);
  SetWindowLongPtrW(window_, GWLP_USERDATA, 0);
}

}  // namespace tarvelin::bench
