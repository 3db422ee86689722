// Measures the scans of the "New" and "Send to" pages on a crowded system, each beside its floor:
// the calls to Windows that no scan can do without, as a plain loop. bench.sh prepares the system.
#include <windows.h>
// After windows.h, on which they depend.
#include <commctrl.h>
#include <shellapi.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <functional>
#include <limits>
#include <set>
#include <stdexcept>
#include <string>
#include <vector>

#include "common/handles_win.h"
#include "common/system_win.h"
#include "shellmenu/shellmenu.h"
#include "widgets/message_loop_win.h"
#include "widgets/peers_win.h"

namespace tarvelin {
namespace {

constexpr int kRounds = 3;
constexpr int kMostRounds = 10;
constexpr int kIcons = 50;
constexpr int kSendToFiles = 5000;
constexpr int kSendToTypes = 10;
constexpr double kFloorLimit = 1.3;
constexpr double kDoublingLimit = 2.1;
const std::wstring kFolder = L"C:\\bench\\";
const std::wstring kSendTo = kFolder + L"sendto\\";

void Require(bool holds, const char* what) {
  if (!holds) throw std::runtime_error(what);
}

double Milliseconds(const std::function<void()>& work) {
  const auto start = std::chrono::steady_clock::now();
  work();
  return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start)
      .count();
}

UniqueRegistryKey OpenKey(HKEY parent, const std::wstring& path, REGSAM access) {
  UniqueRegistryKey key;
  RegOpenKeyExW(parent, path.c_str(), 0, access, key.Put());
  return key;
}

std::wstring DefaultText(const UniqueRegistryKey& key) {
  wchar_t text[512] = L"";
  DWORD size = sizeof text - sizeof(wchar_t);
  RegQueryValueExW(key.Get(), nullptr, nullptr, nullptr, reinterpret_cast<BYTE*>(text), &size);
  return text;
}

// While it lives, HKEY_LOCAL_MACHINE and HKEY_CLASSES_ROOT are those of a seeded system with that
// many file types.
class SeededSystem {
 public:
  explicit SeededSystem(int types) {
    const std::wstring machine = L"Software\\TarvelinBench\\" + std::to_wstring(types);
    Redirect(HKEY_LOCAL_MACHINE, machine);
    Redirect(HKEY_CLASSES_ROOT, machine + L"\\Software\\Classes");
  }
  SeededSystem(const SeededSystem&) = delete;
  SeededSystem& operator=(const SeededSystem&) = delete;
  ~SeededSystem() {
    RegOverridePredefKey(HKEY_CLASSES_ROOT, nullptr);
    RegOverridePredefKey(HKEY_LOCAL_MACHINE, nullptr);
  }

 private:
  static void Redirect(HKEY root, const std::wstring& path) {
    const auto key = OpenKey(HKEY_CURRENT_USER, path, KEY_ALL_ACCESS);
    Require(key && RegOverridePredefKey(root, key.Get()) == ERROR_SUCCESS, "no seeded registry");
  }
};

std::wstring IconFile(int number) { return kFolder + std::to_wstring(10 + number) + L".ico"; }

// Every file type: its program identifier, its two ShellNew keys, its description and its icon;
// and each icon once.
void NewFloor(int types) {
  std::vector<std::wstring> names;
  {
    const auto root = OpenKey(HKEY_CLASSES_ROOT, L"", KEY_ALL_ACCESS);
    wchar_t name[256];
    for (DWORD size = 256; RegEnumKeyExW(root.Get(), static_cast<DWORD>(names.size()), name, &size,
                                         nullptr, nullptr, nullptr, nullptr) == ERROR_SUCCESS;
         size = 256) {
      names.emplace_back(name, size);
    }
  }
  int offered = 0;
  for (const std::wstring& name : names) {
    if (name[0] != L'.') continue;
    const std::wstring programId = DefaultText(OpenKey(HKEY_CLASSES_ROOT, name, KEY_READ));
    auto shellNew = OpenKey(HKEY_CLASSES_ROOT, name + L"\\" + programId + L"\\ShellNew", KEY_READ);
    if (!shellNew) shellNew = OpenKey(HKEY_CLASSES_ROOT, name + L"\\ShellNew", KEY_READ);
    wchar_t value[256];
    DWORD values = 0;
    for (DWORD size = 256; RegEnumValueW(shellNew.Get(), values, value, &size, nullptr, nullptr,
                                         nullptr, nullptr) == ERROR_SUCCESS;
         size = 256) {
      ++values;
    }
    shellNew.Reset();
    const auto description = DefaultText(
        OpenKey(HKEY_LOCAL_MACHINE, L"SOFTWARE\\Classes\\" + programId, KEY_ALL_ACCESS));
    const auto icon =
        DefaultText(OpenKey(HKEY_CLASSES_ROOT, programId + L"\\DefaultIcon", KEY_ALL_ACCESS));
    if (values > 0 && !description.empty() && !icon.empty()) ++offered;
  }
  Require(offered == types, "the floor misses file types");
  for (int number = 0; number < kIcons; ++number) {
    const UniqueIcon icon(ExtractIconW(GetModuleHandleW(nullptr), IconFile(number).c_str(), 0));
    Require(reinterpret_cast<std::uintptr_t>(icon.Get()) > 1, "an icon cannot be extracted");
  }
}

// The enumeration, a look at the message queue for each entry, and each type's icon once.
void SendToFloor() {
  WIN32_FIND_DATAW entry{};
  std::set<std::wstring> types;
  const UniqueFind search(FindFirstFileW((kSendTo + L"*.*").c_str(), &entry));
  Require(static_cast<bool>(search), "no folder to list");
  do {
    MSG message;
    while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) DispatchMessageW(&message);
    const std::wstring name = entry.cFileName;
    const auto dot = name.rfind(L'.');
    if (name == L"." || name == L".." || !types.insert(name.substr(dot)).second) continue;
    SHFILEINFOW info{};
    SHGetFileInfoW(name.c_str(), FILE_ATTRIBUTE_NORMAL, &info, sizeof info,
                   SHGFI_ICON | SHGFI_USEFILEATTRIBUTES | SHGFI_SMALLICON);
    const UniqueIcon icon(info.hIcon);
  } while (FindNextFileW(search.Get(), &entry));
}

// What a window adds to a floor: a row of its list control for each row of the page.
void InsertFloor(int rows) {
  HWND list = CreateWindowExW(0, WC_LISTVIEWW, L"", WS_POPUP | LVS_REPORT, 0, 0, 600, 400, nullptr,
                              nullptr, GetModuleHandleW(nullptr), nullptr);
  LVCOLUMNW column{};
  SendMessageW(list, LVM_INSERTCOLUMNW, 0, reinterpret_cast<LPARAM>(&column));
  SendMessageW(list, WM_SETREDRAW, FALSE, 0);
  LVITEMW item{};
  item.mask = LVIF_TEXT | LVIF_IMAGE;
  item.pszText = LPSTR_TEXTCALLBACKW;
  item.iImage = I_IMAGECALLBACK;
  for (item.iItem = 0; item.iItem < rows; ++item.iItem) {
    SendMessageW(list, LVM_INSERTITEMW, 0, reinterpret_cast<LPARAM>(&item));
  }
  DestroyWindow(list);
}

// The list and the images of a page, in a window when there is a context for one.
struct Page {
  explicit Page(PeerContext* context) {
    list.SetSmallImages(&images);
    if (context) AttachPeers(form, *context, {});
  }

  [[nodiscard]] std::size_t DistinctImages() const {
    std::set<int> stored;
    for (int row = 0; row < list.Count(); ++row) {
      stored.insert(images.StoredImage(list.Item(row).imageIndex));
    }
    return stored.size();
  }

  TForm form{L"FormBench", 600, 400, L"Bench"};
  TImageList& images = form.Create<TImageList>(L"images");
  TListView& list = form.Create<TListView>(L"list", &form, TRect{0, 0, 600, 400},
                                           std::vector<TListColumn>{{L"Type", 300}});
};

double NewScan(WindowsPlatform& platform, PeerContext* context, int types) {
  Page page(context);
  const double taken = Milliseconds([&] { ScanNewMenu(platform.Get(), page.list, page.images); });
  Require(page.list.Count() == types, "the scan misses file types");
  Require(page.images.Count() == types && page.DistinctImages() == kIcons, "icons are missing");
  return taken;
}

double SendToScan(WindowsPlatform& platform, PeerContext* context) {
  Page page(context);
  const double taken =
      Milliseconds([&] { ScanSendTo(platform.Get(), page.list, page.images, kSendTo); });
  Require(page.list.Count() == kSendToFiles, "the scan misses files");
  Require(page.DistinctImages() <= kSendToTypes, "icons are taken twice");
  return taken;
}

// An icon of 16 x 16 pixels with a colour of its own.
void WriteIcon(int number) {
  std::vector<unsigned char> file(6 + 16 + 40 + 16 * 16 * 4 + 16 * 4);
  const auto put = [&](std::size_t offset, unsigned value) {
    for (std::size_t i = 0; i < 4; ++i)
      file[offset + i] = static_cast<unsigned char>(value >> 8 * i);
  };
  put(2, 1 | 1 << 16);                 // an icon file with one image
  put(6, 16 | 16 << 8);                // its size
  put(10, 1 | 32 << 16);               // one plane, 32 bits for each pixel
  put(14, 40 + 16 * 16 * 4 + 16 * 4);  // bytes
  put(18, 22);                         // and where they begin
  put(22, 40);
  put(26, 16);
  put(30, 32);  // the height of picture and mask
  put(34, 1 | 32 << 16);
  for (std::size_t pixel = 0; pixel < 256; ++pixel) {
    put(62 + pixel * 4, 0xFF000000U | static_cast<unsigned>(number) * 0x040308U);
  }
  const UniqueFile handle(CreateFileW(IconFile(number).c_str(), GENERIC_WRITE, 0, nullptr,
                                      CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr));
  DWORD done = 0;
  Require(WriteFile(handle.Get(), file.data(), static_cast<DWORD>(file.size()), &done, nullptr),
          "an icon cannot be written");
}

void PrepareFiles() {
  CreateDirectoryW(kFolder.c_str(), nullptr);
  CreateDirectoryW(kSendTo.c_str(), nullptr);
  for (int number = 0; number < kIcons; ++number) WriteIcon(number);
  for (int number = 0; number < kSendToFiles; ++number) {
    const std::wstring path = kSendTo + L"Entry " + std::to_wstring(number) + L".t" +
                              std::to_wstring(number % kSendToTypes);
    const UniqueFile file(CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS,
                                      FILE_ATTRIBUTE_NORMAL, nullptr));
    Require(static_cast<bool>(file), "a file cannot be written");
  }
}

constexpr double kNever = std::numeric_limits<double>::max();

struct Timing {
  double floor = kNever;
  double list = kNever;  // the scan into a list alone
  double windowFloor = kNever;
  double window = kNever;  // the scan into a list that is shown by a window
};

// The best of several rounds, in which all take turns: what else runs on the machine only slows
// them down. While that breaks a limit, there are more rounds.
template <class Floor, class Scan>
Timing Measure(PeerContext& context, int rows, const Floor& floor, const Scan& scan) {
  Timing best;
  for (int round = 0; round < kMostRounds; ++round) {
    const double bare = Milliseconds(floor);
    const double inserting = Milliseconds([&] { InsertFloor(rows); });
    best.floor = std::min(best.floor, bare);
    best.windowFloor = std::min(best.windowFloor, bare + inserting);
    best.list = std::min(best.list, scan(nullptr));
    best.window = std::min(best.window, scan(&context));
    const bool kept =
        best.list <= kFloorLimit * best.floor && best.window <= kFloorLimit * best.windowFloor;
    if (kept && round + 1 >= kRounds) break;
  }
  return best;
}

// Prints one line of the table and tells whether the limit is kept.
bool Report(const std::string& what, double base, double measured, double limit) {
  const double ratio = measured / base;
  std::printf("%-36s %10.1f %10.1f %7.2f %7.2f  %s\n", what.c_str(), base, measured, ratio, limit,
              ratio <= limit ? "ok" : "TOO SLOW");
  std::fflush(stdout);
  return ratio <= limit;
}

bool ReportBoth(const std::string& what, const Timing& timing) {
  const bool kept = Report(what + ", list", timing.floor, timing.list, kFloorLimit);
  return Report(what + ", window", timing.windowFloor, timing.window, kFloorLimit) && kept;
}

bool Run() {
  PrepareFiles();
  const INITCOMMONCONTROLSEX controls{sizeof controls, ICC_LISTVIEW_CLASSES};
  InitCommonControlsEx(&controls);
  WindowsPlatform platform;
  MessageLoop loop;
  platform.SetMessagePump([&] { loop.ProcessWaiting(); });
  struct : Commands {
    void Run(const std::function<void()>& command) override { command(); }
    void Report(const std::function<void()>& report) override { report(); }
    [[nodiscard]] bool Busy() const override { return false; }
    void Listen(const std::function<void()>& wait) override { wait(); }
  } commands;
  PeerContext context{GetModuleHandleW(nullptr), loop, commands, nullptr, nullptr};

  const auto measureNew = [&](int types) {
    const SeededSystem seeded(types);
    return Measure(
        context, types, [&] { NewFloor(types); },
        [&](PeerContext* peers) { return NewScan(platform, peers, types); });
  };
  std::printf("%-36s %10s %10s %7s %7s\n", "", "floor ms", "scan ms", "ratio", "limit");
  const Timing some = measureNew(20000);
  bool kept = ReportBoth("New, 20,000 file types", some);
  const Timing twice = measureNew(40000);
  kept &= ReportBoth("New, 40,000 file types", twice);
  kept &= Report("New, from 20,000 to 40,000, list", some.list, twice.list, kDoublingLimit);
  kept &= Report("New, from 20,000 to 40,000, window", some.window, twice.window, kDoublingLimit);
  kept &= ReportBoth("Send to, 5,000 files",
                     Measure(context, kSendToFiles, SendToFloor,
                             [&](PeerContext* peers) { return SendToScan(platform, peers); }));
  return kept;
}

}  // namespace
}  // namespace tarvelin

int wmain() {
  try {
    return tarvelin::Run() ? 0 : 1;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "bench: %s\n", error.what());
    return 2;
  }
}
