// Measures the program beside its floors, on Windows or under Wine; ../bench.sh prepares the system
// and makes the table. Every line of output is one pair of measurements, in turns the floor's first
// and the program's first: group, item, size, floor, program; milliseconds, or bytes.
//   bench_win scan NAME MOST MODULE
//                                 a scan at growing sizes up to that many entries, whose modules
//                                 are copies of that one
//   bench_win work                removals, selections, the restoring of settings
//   bench_win start PROGRAM BARE  from the creation of a process to its filled list
#include "bench/floors_win.h"

// After windows.h, on which they depend.
#include <commctrl.h>
#include <psapi.h>

#include <chrono>
#include <cstdio>
#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

#include "addons/UnitIEBrowserHelp.h"
#include "app/application.h"
#include "common/handles_win.h"
#include "settings/settings.h"
#include "shellmenu/shellmenu.h"
#include "widgets/list_update.h"
#include "widgets/message_boxes_win.h"
#include "widgets/message_loop_win.h"
#include "widgets/peers_win.h"
#include "widgets/platform_win.h"

namespace tarvelin::bench {
namespace {

constexpr int kPairs = 7;
// What is over soon is measured more often, as some machines change their speed every other second.
constexpr int kMostPairs = 21;
constexpr double kEnough = 5000;  // milliseconds of measured work
constexpr int kSizes[] = {100, 1000, 10000, 50000};
constexpr int kCostly = 10000;  // scans that read a module for each entry stop here
constexpr int kSettings = 22;
constexpr wchar_t kHandlers[] = L"*\\shellex\\ContextMenuHandlers";

using Work = std::function<double()>;  // returns what it took

void Require(bool holds, const char* what) {
  if (!holds) throw std::runtime_error(what);
}

template <class Body>
double Milliseconds(const Body& body) {
  const auto start = std::chrono::steady_clock::now();
  body();
  return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start)
      .count();
}

void Print(const char* group, const std::wstring& item, int size, double floor, double program) {
  std::printf("%s\t%ls\t%d\t%.4f\t%.4f\n", group, item.c_str(), size, floor, program);
  std::fflush(stdout);
}

void Pairs(const char* group, const std::wstring& item, int size, const Work& floor,
           const Work& program) {
  double measured = 0;
  for (int pair = 0; pair < kPairs || (pair < kMostPairs && measured < kEnough); ++pair) {
    double bare = pair % 2 == 0 ? floor() : 0;
    const double own = program();
    if (bare == 0) bare = floor();
    measured += bare + own;
    Print(group, item, size, bare, own);
  }
}

// ---- Systems and pages ----

UniqueRegistryKey CreateKey(HKEY parent, const std::wstring& path) {
  UniqueRegistryKey key;
  RegCreateKeyExW(parent, path.c_str(), 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, key.Put(), nullptr);
  return key;
}

// While it lives, the roots are those of the system that was seeded for a scan with that many
// entries.
class SeededSystem {
 public:
  SeededSystem(const std::wstring& scan, int size) {
    const std::wstring system = L"Software\\TarvelinBench\\" + scan + L"\\" + std::to_wstring(size);
    const auto machine = CreateKey(HKEY_CURRENT_USER, system + L"\\Machine");
    const auto classes = CreateKey(machine.Get(), L"Software\\Classes");
    const auto user = CreateKey(HKEY_CURRENT_USER, system + L"\\User");
    Require(!RegOverridePredefKey(HKEY_LOCAL_MACHINE, machine.Get()) &&
                !RegOverridePredefKey(HKEY_CLASSES_ROOT, classes.Get()) &&
                !RegOverridePredefKey(HKEY_CURRENT_USER, user.Get()),
            "no seeded registry");
  }
  SeededSystem(const SeededSystem&) = delete;
  SeededSystem& operator=(const SeededSystem&) = delete;
  ~SeededSystem() {
    for (const HKEY root : {HKEY_CLASSES_ROOT, HKEY_LOCAL_MACHINE, HKEY_CURRENT_USER}) {
      RegOverridePredefKey(root, nullptr);
    }
  }
};

class EnglishMessages : public MessageLookup {
 public:
  std::wstring Message(const Text& text) const override { return std::wstring(text.english); }
};

// What the scans need, once for the whole run.
struct Program {
  WindowsBoxes boxes;
  MessageLoop loop;
  TApplication application{boxes, L"Bench"};
  PeerContext context{GetModuleHandleW(nullptr), loop, application, nullptr, nullptr};
  WindowsPlatform platform{boxes, context};
  EnglishMessages messages;
  TScanIeBrowser scanner{platform.Get(), messages, {}};
};

// The list of a page, alone or in a shown window.
struct Page {
  Page(Program& program, bool shown) {
    list.SetSmallImages(&images);
    if (!shown) return;
    AttachPeers(form, program.context, {});
    form.Show();
    program.loop.ProcessWaiting();
  }
  void Update() const {
    if (const HWND window = WindowOf(list)) UpdateWindow(window);
  }

  TForm form{L"FormBench", 600, 400, L"Bench"};
  TImageList& images = form.Create<TImageList>(L"images");
  TListView& list = form.Create<TListView>(
      L"list", &form, TRect{0, 0, 600, 400},
      std::vector<TListColumn>{{L"Name", 180}, {L"Publisher", 180}, {L"File Path", 180}});
};

struct Scan {
  const wchar_t* name;
  int most;
  void (*run)(Program& program, Page& page);
};

const Scan kScans[] = {
    {L"shell", 50000,
     [](Program& p, Page& page) { ScanShellExtensions(p.platform.Get(), p.messages, page.list); }},
    {L"new", 50000,
     [](Program& p, Page& page) { ScanNewMenu(p.platform.Get(), page.list, page.images); }},
    {L"sendto", 50000,
     [](Program& p, Page& page) { ScanSendTo(p.platform.Get(), page.list, page.images, kSendTo); }},
    {L"menus", 50000, [](Program& p, Page& page) { p.scanner.ScanContextEntries(page.list); }},
    {L"bars", kCostly, [](Program& p, Page& page) { p.scanner.ScanExplorerBars(page.list); }},
    {L"toolbars", kCostly, [](Program& p, Page& page) { p.scanner.ScanToolbars(page.list); }},
    {L"buttons", 50000, [](Program& p, Page& page) { p.scanner.ScanExtraButtons(page.list); }},
    {L"helpers", kCostly, [](Program& p, Page& page) { p.scanner.ScanHelperObjects(page.list); }},
    {L"activex", kCostly,
     [](Program& p, Page& page) { p.scanner.ScanDownloadedActiveX(page.list); }},
    {L"settings", kSettings, [](Program& p, Page& page) { p.scanner.ScanIeSettings(page.list); }},
};

// ---- Files ----

void Write(const std::wstring& path, const std::vector<unsigned char>& content) {
  const UniqueFile file(CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS,
                                    FILE_ATTRIBUTE_NORMAL, nullptr));
  DWORD done = 0;
  Require(file && WriteFile(file.Get(), content.data(), static_cast<DWORD>(content.size()), &done,
                            nullptr),
          "a file cannot be written");
}

// An icon of 16 x 16 pixels with a colour of its own.
std::vector<unsigned char> IconFile(int number) {
  std::vector<unsigned char> file(6 + 16 + 40 + 16 * 16 * 4 + 16 * 4);
  const auto put = [&](std::size_t offset, unsigned value) {
    for (std::size_t i = 0; i < 4; ++i) {
      file[offset + i] = static_cast<unsigned char>(value >> 8 * i);
    }
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
  return file;
}

void PrepareFiles(const std::wstring& module) {
  CreateDirectoryW(kFolder.c_str(), nullptr);
  CreateDirectoryW(kSendTo.c_str(), nullptr);
  for (int number = 10; number < 10 + kFiles; ++number) {
    const std::wstring name = kFolder + std::to_wstring(number);
    Write(name + L".ico", IconFile(number));
    Require(CopyFileW(module.c_str(), (name + L".dll").c_str(), FALSE), "no module to copy");
  }
}

// ---- Scans ----

void AddTextBytes(double& bytes, const std::wstring& text) {
  bytes += static_cast<double>(text.size() * sizeof(wchar_t));
}

double TextBytes(const TListView& list) {
  double bytes = 0;
  for (int row = 0; row < list.Count(); ++row) {
    const TListItem item = list.Item(row);
    AddTextBytes(bytes, item.caption);
    for (const std::wstring& text : item.subItems) AddTextBytes(bytes, text);
    if (const auto addOn = list.Data<TIESec>(row)) {
      AddTextBytes(bytes, addOn->FilePath);
      AddTextBytes(bytes, addOn->RegLocation);
      AddTextBytes(bytes, addOn->DefaultValue);
    } else if (const auto entry = list.Data<TShellExtension>(row)) {
      AddTextBytes(bytes, entry->Target);
      AddTextBytes(bytes, entry->KeyPath);
    } else if (const auto type = list.Data<TNew>(row)) {
      AddTextBytes(bytes, type->KeyPath);
    } else if (const auto file = list.Data<TSendTo>(row)) {
      AddTextBytes(bytes, file->FilePath);
    }
  }
  return bytes;
}

// What the heaps of this process hold, with what it costs to keep it there.
double HeapBytes() {
  HANDLE heaps[64];
  double bytes = 0;
  const DWORD count = GetProcessHeaps(64, heaps);
  for (DWORD heap = 0; heap < count; ++heap) {
    PROCESS_HEAP_ENTRY entry{};
    while (HeapWalk(heaps[heap], &entry)) {
      if (entry.wFlags & PROCESS_HEAP_ENTRY_BUSY) bytes += entry.cbData + entry.cbOverhead;
    }
  }
  return bytes;
}

void MeasureScan(Program& program, const Scan& scan, int size) {
  const std::wstring name = scan.name;
  for (int number = 0; name == L"sendto" && number < size; ++number) {
    Write(kSendTo + L"Entry " + std::to_wstring(number) + L".t" + std::to_wstring(number % 10), {});
  }
  const SeededSystem seeded(name, size);
  const int rows = size;
  const int passed = name == L"settings" ? 1 : size;
  const auto floor = [&](HIMAGELIST images) {
    int found = 0;
    const double taken = Milliseconds([&] { found = ScanFloor(name, images); });
    Require(found == passed, "the floor misses entries");
    return taken;
  };
  const auto scanInto = [&](bool shown) {
    Page page(program, shown);
    const double taken = Milliseconds([&] {
      {
        const ListUpdate update(page.list);  // as the main window does
        scan.run(program, page);
      }
      page.Update();
    });
    Require(page.list.Count() == rows, "the scan misses entries");
    return taken;
  };
  Pairs(
      "scan", name, size, [&] { return floor(nullptr); }, [&] { return scanInto(false); });
  Page filled(program, false);
  scan.run(program, filled);
  const CellText cell = [&](int row, int column) -> std::wstring_view {
    return filled.list.CellText(row, static_cast<std::size_t>(column));
  };
  Pairs(
      "scan, shown", name, size,
      [&] {
        BareList list;
        return floor(list.Images()) +
               Milliseconds([&] { list.Show(rows, filled.list.CheckBoxes(), cell); });
      },
      [&] { return scanInto(true); });

  if (size > kCostly) return;  // walking heaps of that size takes Wine longer than all the rest
  const double before = HeapBytes();
  Page page(program, true);
  const double empty = HeapBytes();
  scan.run(program, page);
  const double after = HeapBytes();
  Require(after > empty && empty > before, "the heaps cannot be walked");
  Print("bytes of a row", name, size, TextBytes(page.list) / rows, (after - empty) / rows);
}

void MeasureScans(const std::wstring& name, int most) {
  Program program;
  for (const Scan& scan : kScans) {
    if (scan.name != name) continue;
    if (scan.most == kSettings) MeasureScan(program, scan, kSettings);
    for (const int size : kSizes) {
      if (size <= scan.most && size <= most) MeasureScan(program, scan, size);
    }
  }
}

// ---- Removals, selections, settings ----

std::wstring Handler(int number) {
  wchar_t name[32];
  std::swprintf(name, 32, L"\\Entry %05d", number);
  return std::wstring(kHandlers) + name;
}

void MeasureRemovals(Program& program) {
  constexpr int size = 10000;
  constexpr int atOnce = 20;
  const SeededSystem seeded(L"shell", size);
  RegistryBackend& registry = program.platform.Get().registry;
  int next = 0;
  const auto removeSome = [&](const auto& remove) {
    return [&] {
      return Milliseconds([&] {
               for (int i = 0; i < atOnce; ++i) remove(Handler(next++));
             }) /
             atOnce;
    };
  };
  Pairs("removal", L"one of many", size, removeSome([](const std::wstring& key) {
          Require(RegDeleteKeyW(HKEY_CLASSES_ROOT, key.c_str()) == ERROR_SUCCESS, "not removed");
        }),
        removeSome([&](const std::wstring& key) { RemoveShellKey(registry, L"\\" + key); }));

  const std::wstring tree = std::wstring(kHandlers) + L"\\Tree";
  const auto removeTree = [&](const auto& remove) {
    return [&] {
      for (int child = 0; child < size; ++child) {
        CreateKey(HKEY_CLASSES_ROOT, tree + L"\\" + std::to_wstring(child));
      }
      const double taken = Milliseconds(remove);
      HKEY left = nullptr;
      Require(RegOpenKeyW(HKEY_CLASSES_ROOT, tree.c_str(), &left) == ERROR_FILE_NOT_FOUND,
              "the tree is still there");
      return taken;
    };
  };
  Pairs("removal", L"a key with that many", size,
        removeTree([&] { RegDeleteTreeW(HKEY_CLASSES_ROOT, tree.c_str()); }),
        removeTree([&] { RemoveShellKey(registry, L"\\" + tree); }));
}

void MeasureSelections(Program& program) {
  constexpr int steps = 100;
  // Without drawing, which takes a hundred times as long and is the list control's own.
  const auto walk = [](HWND list, int rows) {
    SendMessageW(list, WM_SETREDRAW, FALSE, 0);
    return Milliseconds([&] {
             LVITEMW item{};
             item.state = item.stateMask = LVIS_SELECTED | LVIS_FOCUSED;
             for (int step = 1; step <= steps; ++step) {
               SendMessageW(list, LVM_SETITEMSTATE, static_cast<WPARAM>(rows / steps * step - 1),
                            reinterpret_cast<LPARAM>(&item));
             }
           }) /
           steps;
  };
  for (const int rows : {1000, 10000}) {
    BareList bare;
    bare.Show(rows, false, [](int, int) { return L"A text"; });
    Page page(program, true);
    page.list.BeginUpdate();
    for (int row = 0; row < rows; ++row) {
      TListItem item;
      item.caption = L"Row " + std::to_wstring(row);
      item.subItems = {L"A publisher", L"C:\\bench\\10.dll"};
      page.list.Add(std::move(item));
    }
    page.list.EndUpdate();
    Pairs(
        "selection", L"the next row", rows, [&] { return walk(bare.Handle(), rows); },
        [&] {
          const double taken = walk(WindowOf(page.list), rows);
          Require(page.list.SelectedIndex() == rows - 1, "the last row is not selected");
          return taken;
        });
  }
}

void MeasureRestore(Program& program) {
  const SeededSystem seeded(L"settings", kSettings);
  const auto bare = [] {
    return Milliseconds([] {
      for (const TWatchedSetting& setting : WatchedSettings()) {
        const HKEY root =
            setting.root == RootKey::CurrentUser ? HKEY_CURRENT_USER : HKEY_LOCAL_MACHINE;
        const auto key = CreateKey(root, std::wstring(setting.keyPath.substr(1)));
        const std::wstring text(setting.defaultValue);
        RegSetValueExW(key.Get(), std::wstring(setting.valueName).c_str(), 0, REG_SZ,
                       reinterpret_cast<const BYTE*>(text.c_str()),
                       static_cast<DWORD>((text.size() + 1) * sizeof(wchar_t)));
      }
    });
  };
  Page page(program, true);
  program.scanner.ScanIeSettings(page.list);
  Pairs("restore", L"all settings", kSettings, bare, [&] {
    return Milliseconds([&] {
      for (int row = 0; row < page.list.Count(); ++row) page.list.SetChecked(row, true);
      Require(program.scanner.RestoreSettings(page.list) == kSettings, "a setting is not restored");
    });
  });
}

// ---- Start ----

UniqueKernelObject Start(std::wstring command, HANDLE output) {
  STARTUPINFOW startup{};
  startup.cb = sizeof startup;
  if (output) {
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdOutput = startup.hStdError = output;
  }
  PROCESS_INFORMATION process{};
  Require(CreateProcessW(nullptr, command.data(), nullptr, nullptr, output != nullptr, 0, nullptr,
                         nullptr, &startup, &process),
          "a program cannot be started");
  CloseHandle(process.hThread);
  return UniqueKernelObject(process.hProcess);
}

struct Shown {
  int rows;
  bool filled;
  bool painted;
};

BOOL CALLBACK LookAt(HWND window, LPARAM parameter) {
  if (!IsWindowVisible(window)) return TRUE;
  auto& shown = *reinterpret_cast<Shown*>(parameter);
  wchar_t name[32]{};
  GetClassNameW(window, name, 32);
  if (std::wstring(name) == WC_LISTVIEWW) {
    shown.filled |= SendMessageW(window, LVM_GETITEMCOUNT, 0, 0) == shown.rows;
  }
  shown.painted &= !GetUpdateRect(window, nullptr, FALSE);
  return TRUE;
}

// Whether a window is shown with that many rows in a list, and nothing of it waits to be painted.
bool IsShown(HWND window, int rows) {
  if (!window || !IsWindowVisible(window)) return false;
  Shown shown{rows, false, !GetUpdateRect(window, nullptr, FALSE)};
  EnumChildWindows(window, LookAt, reinterpret_cast<LPARAM>(&shown));
  return shown.filled && shown.painted;
}

struct Started {
  double taken;  // milliseconds
  double bytes;  // private ones, at most
};

// From the creation of the process to its painted list.
Started StartWindow(const std::wstring& program, const wchar_t* windowClass, int rows) {
  UniqueKernelObject process;
  HWND window = nullptr;
  // It waits for input once everything is painted. Asking it takes the longer the more windows it
  // has: before, that would make it slower, and the question that finds it painted is not its time.
  double taken = Milliseconds([&] {
    process = Start(L"\"" + program + L"\"", nullptr);
    WaitForInputIdle(process.Get(), 20000);
  });
  for (int tries = 0;; ++tries) {
    bool shown = false;
    const double asked =
        Milliseconds([&] { shown = IsShown(window = FindWindowW(windowClass, nullptr), rows); });
    if (shown) break;
    Require(tries < 20000, "the list does not appear");
    taken += asked + Milliseconds([] { Sleep(1); });
  }
  PROCESS_MEMORY_COUNTERS_EX memory{};
  GetProcessMemoryInfo(process.Get(), reinterpret_cast<PROCESS_MEMORY_COUNTERS*>(&memory),
                       sizeof memory);
  PostMessageW(window, WM_CLOSE, 0, 0);
  Require(WaitForSingleObject(process.Get(), 20000) == WAIT_OBJECT_0, "a program does not end");
  return {taken, static_cast<double>(std::max(memory.PeakPagefileUsage, memory.PrivateUsage))};
}

void MeasureStart(const std::wstring& program, const std::wstring& bare) {
  constexpr int rows = 60;  // which the system was seeded with
  std::vector<Started> bares;
  std::vector<Started> programs;
  Pairs(
      "start", L"first page filled", rows,
      [&] {
        bares.push_back(StartWindow(bare, L"BareProgram", rows));
        return bares.back().taken;
      },
      [&] {
        programs.push_back(StartWindow(program, L"TFormMain", rows));
        return programs.back().taken;
      });
  for (std::size_t i = 0; i < bares.size(); ++i) {
    Print("bytes at start", L"private", rows, bares[i].bytes, programs[i].bytes);
  }

  // Beside what a user would type to see the same.
  constexpr int many = 1000;
  for (int number = rows; number < many; ++number) {
    const auto key = CreateKey(HKEY_CLASSES_ROOT, Handler(number));
    constexpr wchar_t classId[] = L"{00000000-0000-4000-8000-000000000000}";
    RegSetValueExW(key.Get(), nullptr, 0, REG_SZ, reinterpret_cast<const BYTE*>(classId),
                   sizeof classId);
  }
  SECURITY_ATTRIBUTES inherited{sizeof inherited, nullptr, TRUE};
  const UniqueFile nowhere(
      CreateFileW(L"NUL", GENERIC_WRITE, FILE_SHARE_WRITE, &inherited, OPEN_EXISTING, 0, nullptr));
  const auto query = [&] {
    return Milliseconds([&] {
      for (const wchar_t* key :
           {L"*\\shell", kHandlers, L"CLSID\\{645FF040-5081-101B-9F08-00AA002F954E}\\Shell",
            L"Directory\\shell", L"Directory\\shellex\\ContextMenuHandlers",
            L"Folder\\shellex\\ContextMenuHandlers", L"Drive\\shellex\\ContextMenuHandlers"}) {
        const auto process =
            Start(L"reg.exe query \"HKCR\\" + std::wstring(key) + L"\" /s", nowhere.Get());
        WaitForSingleObject(process.Get(), INFINITE);
      }
    });
  };
  Pairs("beside reg query /s", L"handlers and verbs", many, query,
        [&] { return StartWindow(program, L"TFormMain", many).taken; });
}

int Run(const std::vector<std::wstring>& arguments) {
  const INITCOMMONCONTROLSEX controls{sizeof controls, ICC_LISTVIEW_CLASSES};
  InitCommonControlsEx(&controls);
  if (arguments.size() == 4 && arguments[0] == L"scan") {
    PrepareFiles(arguments[3]);
    MeasureScans(arguments[1], std::stoi(arguments[2]));
  } else if (arguments.size() == 1 && arguments[0] == L"work") {
    Program program;
    MeasureRemovals(program);
    MeasureSelections(program);
    MeasureRestore(program);
  } else if (arguments.size() == 3 && arguments[0] == L"start") {
    MeasureStart(arguments[1], arguments[2]);
  } else {
    return 2;
  }
  return 0;
}

}  // namespace
}  // namespace tarvelin::bench

int wmain(int count, wchar_t** arguments) {
  try {
    return tarvelin::bench::Run({arguments + 1, arguments + count});
  } catch (const std::exception& error) {
    std::fprintf(stderr, "bench: %s\n", error.what());
    return 1;
  }
}
