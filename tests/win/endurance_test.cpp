// What shows after a long time or at a bad moment only: what the program never gives back, what it
// leaves behind when it is killed, and what it makes of a registry that changes while it is read.
#include <gtest/gtest.h>

#include <windows.h>
// After it, on which they depend.
#include <psapi.h>
#include <winternl.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <random>
#include <set>

#include "addons/UnitIEBrowserHelp.h"
#include "app/application.h"
#include "settings/settings.h"
#include "shellmenu/shellmenu.h"
#include "tests/support/test_platform.h"
#include "tests/win/driver_registry.h"
#include "widgets/message_loop_win.h"
#include "widgets/platform_win.h"

namespace tarvelin::testing {
namespace {

using namespace std::literals;

const std::wstring kDirectory = L"HKCR\\Directory";
const std::wstring kFolder = L"C:\\Endurance\\";

// An entry on every page that reads the registry, with that word in every text.
struct Value {
  std::wstring key, name, text;
};
std::vector<Value> EntryOf(const std::wstring& word) {
  const std::wstring id = L"{" + word + L"}", type = L"HKCR\\.tv" + word;
  return {{kClass + id, L"", L"class " + word},
          {kClass + id + L"\\InprocServer32", L"", kFolder + word + L".dll"},
          {kUnit + id, L"", L"unit " + word},
          {kToolbar, id, L"toolbar " + word},
          {kBars + L"\\" + id, L"", L"bar " + word},
          {kExtensions + L"\\" + id, L"MenuText", L"button " + word},
          {kExtensions + L"\\" + id, L"Exec", L"exec " + word},
          {kMenuExt + L"\\" + word, L"", L"page " + word},
          {kDirectory + L"\\shell\\" + word, L"", L"verb " + word},
          {kDirectory + L"\\shell\\" + word + L"\\command", L"", L"run " + word},
          {kDirectory + L"\\shellex\\ContextMenuHandlers\\" + word, L"", id},
          {type, L"", L"type" + word},
          {type + L"\\ShellNew", L"NullFile", L""},
          {L"HKCR\\type" + word, L"", L"Type " + word}};
}
void AddEntry(const std::wstring& word) {
  WriteInteger(kStats + L"\\{" + word + L"}\\iexplore", L"Type", 3);
  for (const Value& value : EntryOf(word)) WriteText(value.key, value.name, value.text);
  InstallModule(L"dunmorrel.dll", kFolder + word + L".dll");
}

class Endurance : public ::testing::Test {
 protected:
  Endurance() {
    for (const auto& key : {kClass, kDirectory, kUnit, kToolbar, kExtensions, kBars, kMenuExt,
                            kStats, kTraces, L"HKCR\\.tventry"s}) {
      DeleteKey(key);
    }
    MakeKey(kTraces + L"\\Unregistered");
    std::filesystem::create_directories(kFolder);
    std::printf("seed %u\n", seed_);
  }

  const unsigned seed_ = std::random_device{}();
  std::mt19937 random_{seed_};
};

// ---- Long use ----

// What a process holds and has to give back: GDI objects, USER objects, handles, bytes of its own.
using Holdings = std::array<SIZE_T, 4>;

// Wine counts no GDI objects, but a process finds the table of its own in its environment block: in
// the one of 64 bits, to which a 32-bit program has no way.
constexpr bool kFindsGdiTable = sizeof(void*) == 8;
SIZE_T GdiObjects(HANDLE process) {
  if (const DWORD count = GetGuiResources(process, GR_GDIOBJECTS)) return count;
  if (!kFindsGdiTable) return 0;
  PROCESS_BASIC_INFORMATION basic{};
  NtQueryInformationProcess(process, ProcessBasicInformation, &basic, sizeof basic, nullptr);
  const auto place = reinterpret_cast<const std::byte*>(basic.PebBaseAddress);
  const void* table = nullptr;
  std::vector<std::array<std::byte, 24>> entries(16384);  // with the type of a used one at 14
  if (!ReadProcessMemory(process, place + 0xF8, &table, sizeof table, nullptr) ||
      !ReadProcessMemory(process, table, entries.data(), entries.size() * 24, nullptr)) {
    throw DriverError(L"no table of GDI objects");
  }
  return entries.size() - static_cast<SIZE_T>(std::ranges::count(
                              entries, std::byte{}, [](auto& entry) { return entry[14]; }));
}

// Nor does it count windows, menus and icons. It gives each a number that is free in the whole
// system: once enough menus have taken all numbers in between, the next ones tell how many there
// are.
SIZE_T UserObjects(HANDLE process) {
  if (const DWORD count = GetGuiResources(process, GR_USEROBJECTS)) return count;
  std::vector<HMENU> menus(1000);
  DWORD last = 0;
  for (HMENU& menu : menus) {
    menu = CreateMenu();
    last = std::max<DWORD>(last, LOWORD(menu));
  }
  for (const HMENU menu : menus) DestroyMenu(menu);
  return last / 2 - menus.size();
}

// Of a single process Wine tells no number of handles either.
SIZE_T Handles(HANDLE process) {
  std::vector<std::byte> table(1 << 20);
  const auto& handles = *reinterpret_cast<const SYSTEM_HANDLE_INFORMATION*>(table.data());
  if (NtQuerySystemInformation(SystemHandleInformation, table.data(),
                               static_cast<ULONG>(table.size()), nullptr) < 0) {
    throw DriverError(L"no table of handles");
  }
  return static_cast<SIZE_T>(std::count_if(
      handles.Handle, handles.Handle + handles.Count,
      [&](const SYSTEM_HANDLE_ENTRY& entry) { return entry.OwnerPid == GetProcessId(process); }));
}

Holdings HeldBy(HANDLE process) {
  PROCESS_MEMORY_COUNTERS memory{};
  GetProcessMemoryInfo(process, &memory, sizeof memory);
  return {GdiObjects(process), UserObjects(process), Handles(process), memory.PagefileUsage};
}

TEST_F(Endurance, LongUseLeavesNothingBehind) {
  {  // What is not counted could not grow.
    const Holdings before = HeldBy(GetCurrentProcess());
    const UniqueBitmap bitmap(CreateBitmap(1, 1, 1, 1, nullptr));
    const UniqueKernelObject event(CreateEventW(nullptr, FALSE, FALSE, nullptr));
    const std::vector<char> bytes(4 << 20, 'x');
    const HMENU menu = CreateMenu();
    const Holdings after = HeldBy(GetCurrentProcess());
    DestroyMenu(menu);
    for (const std::size_t kind : {0U, 1U, 2U}) {
      const bool counted = kind > 0 || kFindsGdiTable || before[0] > 0;
      EXPECT_EQ(after[kind], before[kind] + (counted ? 1 : 0)) << kind;
    }
    EXPECT_GE(after[3], before[3] + bytes.size());
  }

  const wchar_t* const wanted = _wgetenv(L"TARVELIN_ROUNDS");
  const long rounds = std::max(wanted ? std::wcstol(wanted, nullptr, 10) : 0, 30L);
  WriteText(L"HKCU\\Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\Shell Folders",
            L"SendTo", kFolder + L"Send to");
  Program program;
  const UniqueKernelObject process(OpenProcess(PROCESS_ALL_ACCESS, FALSE, program.ProcessId()));
  Holdings early{}, last{};
  for (long round = 1; round <= rounds; ++round) {
    for (const auto* page :
         {L"Shell Extensions", L"New", L"Send to", L"IE Context Menus", L"IE Bars", L"IE Toolbars",
          L"IE Extra Button", L"IE BHOs", L"IE Downloaded ActiveX"}) {
      // One page removes what the next one shows.
      AddEntry(L"entry");
      WriteFileBytes(kFolder + L"Send to\\entry.txt", "");
      program.Open(page);
      ASSERT_GT(program.RowCount(), 0) << ToUtf8(page);
      for (int row = program.RowCount(); row > 0; --row) {
        program.Select(row - 1);
        program.Click(L"Remove");
        program.Answer(IDYES);
        ASSERT_EQ(program.Answer(IDOK).text.substr(0, 14), L"Remove success") << ToUtf8(page);
      }
    }
    program.Open(L"IE Settings");
    program.Select(0);
    program.Click(L"Modify Settings");
    SetText(FindControl(program.Modal(), L"Edit", L""), L"mine");
    program.Press(round % 2 ? VK_RETURN : VK_ESCAPE);
    program.Check(0, true);
    program.Click(L"Use Default Settings");
    program.Answer(IDYES);
    program.Answer(IDOK);
    program.Click(L"Context Menu");
    program.Click(L"Context Menu");
    // Some more is in use for a moment: ten rounds are held against the ten after the first ten.
    const Holdings held = HeldBy(process.Get());
    for (std::size_t kind = 0; kind < held.size(); ++kind) {
      last[kind] = round % 10 == 1 ? held[kind] : std::min(last[kind], held[kind]);
    }
    if (round % 10 == 0) {
      std::printf("round %ld: %s\n", round, ::testing::PrintToString(last).c_str());
    }
    // Only of memory, which Wine gives back when it likes, the larger of the first two tens counts.
    if (round == 10) early = last;
    if (round == 20) early = {last[0], last[1], last[2], std::max(early[3], last[3])};
  }
  // Wine's heaps take and give back a megabyte at a time. Of each message box with themed buttons
  // it also keeps a block of 24 bytes, a bare program's as well: a kilobyte for each round's 22.
  const Holdings allowed{1, 0, 1, 1024 * (1024 + static_cast<SIZE_T>(rounds))};
  for (std::size_t kind = 0; kind < allowed.size(); ++kind) {
    EXPECT_LE(last[kind], early[kind] + allowed[kind]) << kind;
  }
  EXPECT_EQ(program.Close(), 0U);
}

// ---- Killed at any moment ----

// One thing that a command does: what a dump shows of it, and the text that a value has then.
struct Step {
  Lines lines;
  std::wstring key, value;
  std::optional<std::wstring> text;
};
using Steps = std::vector<Step>;

// How a key is deleted: its children go before it, and its values with it. Every key has an unnamed
// value.
void AddDeletion(Steps& steps, const std::wstring& key) {
  std::map<std::wstring, Lines> keys;
  for (const auto& line : DumpRegistry(key)) {
    keys[line.substr(0, line.find(L'|')) + L"\\\xFFFF"].push_back(L"- " + line);
  }
  for (const auto& [path, lines] : keys) {
    steps.push_back({lines, path.substr(0, path.size() - 2), L"", std::nullopt});
  }
}

void AddChildren(const std::wstring& key) {
  for (int child = 100; child < 200; ++child) {
    WriteText(key + L"\\Sub " + std::to_wstring(child), L"", L"x");
    WriteText(key + L"\\Sub " + std::to_wstring(child) + L"\\Below", L"", L"y");
  }
}

class Killed : public Endurance {
 protected:
  static Lines State() {
    return DumpRegistry({L"HKCU\\Software\\Microsoft", L"HKLM\\SOFTWARE\\Classes\\CLSID", kTraces,
                         L"HKLM\\Software\\Microsoft\\Internet Explorer",
                         L"HKLM\\SOFTWARE\\Microsoft\\Code Store Database"});
  }

  // Again and again: makes what a command is given, confirms it, kills the program at some moment,
  // and expects that the first of the steps are done and nothing else is.
  void Repeat(const std::function<Steps()>& prepare, const std::function<void(Program&)>& ask) {
    constexpr int times = 8;
    int interrupted = 0;
    for (int time = 0; time < times; ++time) {
      const Steps steps = prepare();
      Lines before;
      {
        Program program;
        ask(program);
        before = State();
        const std::size_t moment = random_() % (steps.size() + 1);
        PostMessageW(program.Modal(), WM_COMMAND, IDYES, 0);
        const ULONGLONG end = GetTickCount64() + 20000;
        while (moment > 0 && GetTickCount64() < end &&
               ReadText(steps[moment - 1].key, steps[moment - 1].value) != steps[moment - 1].text) {
        }
      }
      Lines left = Differences(before, State()), expected;
      std::size_t done = 0;
      while (done < steps.size() && expected.size() < left.size()) {
        std::ranges::copy(steps[done++].lines, std::back_inserter(expected));
      }
      std::ranges::sort(left);
      std::ranges::sort(expected);
      ASSERT_EQ(left, expected) << done << " of " << steps.size() << " steps";
      interrupted += done > 0 && done < steps.size();
    }
    std::printf("%d of %d were interrupted\n", interrupted, times);
    EXPECT_GT(interrupted, times / 4);
  }
};

TEST_F(Killed, ARemovedKeyGoesFromItsLeavesOn) {
  const std::wstring key = kMenuExt + L"\\killed";
  const auto ask = [](Program& program) {
    program.Open(L"IE Context Menus");
    program.Select(program.RowOf(L"killed"));
    program.Click(L"Remove");
  };
  Repeat(
      [&] {
        WriteText(kMenuExt + L"\\kille", L"", L"stays");
        WriteText(key, L"", L"page");
        AddChildren(key);
        Steps steps;
        AddDeletion(steps, key);
        return steps;
      },
      ask);
  // What it left can be removed as well.
  WriteText(key + L"\\Sub", L"", L"");
  Program program;
  ask(program);
  program.Answer(IDYES);
  EXPECT_EQ(DumpRegistry(key), Lines{});
}

TEST_F(Killed, AHelperObjectIsUnregisteredThenLosesItsClassThenItsUnit) {
  Repeat(
      [] {
        DeleteKey(kTraces);
        MakeKey(kTraces + L"\\Unregistered");
        AddEntry(L"killed");
        Steps steps{{{L"+ " + kTraces + L"\\Unregistered|killed.dll=1:done"},
                     kTraces + L"\\Unregistered",
                     L"killed.dll",
                     L"done"}};
        for (const auto& parent : {kClass, kUnit}) {
          AddChildren(parent + L"{killed}");
          AddDeletion(steps, parent + L"{killed}");
        }
        return steps;
      },
      [](Program& program) {
        program.Open(L"IE BHOs");
        program.Select(program.RowOf(L"class killed"));
        program.Click(L"Remove");
      });
}

TEST_F(Killed, EverySettingIsEitherAsItWasOrRestored) {
  Repeat(
      [] {
        Steps steps;
        for (const TWatchedSetting& setting : WatchedSettings()) {
          const std::wstring key = (setting.root == RootKey::CurrentUser ? L"HKCU" : L"HKLM") +
                                   std::wstring(setting.keyPath);
          const std::wstring name(setting.valueName), text(setting.defaultValue);
          WriteText(key, name, L"hijacked");
          steps.push_back({{L"- " + key + L"|" + name + L"=1:hijacked",
                            L"+ " + key + L"|" + name + L"=1:" + text},
                           key,
                           name,
                           text});
        }
        return steps;
      },
      [](Program& program) {
        program.Open(L"IE Settings");
        program.Click(L"Select All");
        program.Click(L"Use Default Settings");
      });
}

// ---- Rewritten while it is read ----

constexpr unsigned kEntries = 3;
std::wstring Word(unsigned number) { return L"#" + std::to_wstring(number); }

// The other process of the next test.
TEST(Rewriter, DISABLED_DeletesAndMakesKeysForAMinute) {
  std::minstd_rand random(GetCurrentProcessId());
  for (const ULONGLONG end = GetTickCount64() + 60000; GetTickCount64() < end;) {
    const auto values = EntryOf(Word(random() % kEntries));
    const Value& value = values[random() % values.size()];
    if (random() % 2 == 0 && value.key != kToolbar) {
      DeleteKey(value.key);
    } else {
      WriteText(value.key, value.name, value.text);
    }
  }
}

using Words = std::set<std::wstring>;
Words WordsOf(const std::vector<std::wstring>& texts, const std::wstring& first = L"") {
  std::wstring all = first;
  for (const auto& text : texts) all += L" " + text;
  Words words;
  for (std::size_t at = 0; (at = all.find(L'#', at)) != all.npos; ++at) {
    words.insert(all.substr(at, 2));
  }
  return words;
}

TEST_F(Endurance, AScanOfEntriesThatAreRewrittenMixesNone) {
  for (unsigned number = 0; number < kEntries; ++number) AddEntry(Word(number));
  FakeBoxes boxes;
  TApplication application(boxes, L"Test");
  MessageLoop loop;
  PeerContext context{GetModuleHandleW(nullptr), loop, application, nullptr, nullptr};
  WindowsPlatform windows(boxes, context);
  TPlatform& platform = windows.Get();
  const EnglishMessages messages;
  TScanIeBrowser scanner(platform, messages, {});
  TImageList images(L"images");
  const std::function<void(TListView&)> scans[] = {
      [&](TListView& list) { scanner.ScanExtraButtons(list); },
      [&](TListView& list) { ScanShellExtensions(platform, messages, list); },
      [&](TListView& list) { scanner.ScanContextEntries(list); },
      [&](TListView& list) { scanner.ScanExplorerBars(list); },
      [&](TListView& list) { scanner.ScanToolbars(list); },
      [&](TListView& list) { scanner.ScanHelperObjects(list); },
      [&](TListView& list) { scanner.ScanDownloadedActiveX(list); },
      [&](TListView& list) { ScanNewMenu(platform, list, images); }};

  wchar_t self[MAX_PATH] = L"";
  GetModuleFileNameW(nullptr, self, MAX_PATH);
  const UniqueProcess rewriter = Start(
      L"\"" + std::wstring(self) + L"\" --gtest_also_run_disabled_tests --gtest_filter=Rewriter.*");
  int rows = 0, rounds = 0;
  for (const ULONGLONG end = GetTickCount64() + 10000; GetTickCount64() < end; ++rounds) {
    for (const auto& scan : scans) {
      TListView list(L"list", nullptr, {}, {});
      // One reads all classes of the system.
      if (&scan != std::end(scans) - 1 || rounds % 8 == 0) scan(list);
      rows += list.Count();
      for (int row = 0; row < list.Count(); ++row) {
        const TListItem& item = list.Item(row);
        const Words shown = WordsOf(item.subItems, item.caption);
        const Words place = WordsOf(item.data->Details());
        // A button that has vanished shows the texts of one before it.
        const bool borrowed = &scan == scans && shown.size() == 1 && shown < place;
        EXPECT_TRUE(place.size() == 1 && (shown.empty() || shown == place || borrowed))
            << ::testing::PrintToString(shown) << ::testing::PrintToString(place);
      }
    }
  }
  std::printf("%d rows in %d rounds\n", rows, rounds);
  EXPECT_GT(rows, 3 * rounds);
  EXPECT_LT(rows, 18 * rounds) << "nothing was missing";
}

}  // namespace
}  // namespace tarvelin::testing
