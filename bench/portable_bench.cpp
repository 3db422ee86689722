// Measures what decides and touches no Windows, each at growing sizes of its input: a tenfold input
// may take ten times as long. ../bench.sh makes the table.
#include <benchmark/benchmark.h>

#include <string>

#include "addons/UnitIEBrowserHelp.h"
#include "app/ExtIniFiles.h"
#include "common/Corvane_Routine_New.h"
#include "settings/settings.h"
#include "shellmenu/shellmenu.h"
#include "tests/support/test_platform.h"

namespace tarvelin {
namespace {

using testing::EnglishMessages;
using testing::FakeFiles;
using testing::TestPlatform;

// A language file of that many lines, loaded and asked for a text.
void LanguageFile(benchmark::State& state) {
  std::string content = "\xEF\xBB\xBF[Main]\r\nDisplayName=Language\r\n[Tarvelin_M]\r\n";
  for (int line = 0; line < state.range(0); ++line) {
    content += "M_Message_" + std::to_string(line) + " = Text of the message, na\xC3\xAFve\r\n";
  }
  FakeFiles files;
  files.Add(L"x.lng", content);
  TExtIniFile file;
  for (auto _ : state) {
    file.LoadFromFile(files, L"x.lng");
    benchmark::DoNotOptimize(file.ReadText(L"Tarvelin_M", L"M_Message_0", L""));
  }
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(content.size()));
}

// A command line with folders of that many characters.
void CommandLine(benchmark::State& state) {
  FakeFiles files;
  files.environment[L"%ProgramFiles%"] = L"C:\\Program Files";
  std::wstring folders;
  while (static_cast<std::int64_t>(folders.size()) < state.range(0)) folders += L"Folder \\";
  const std::wstring command = L"\"%ProgramFiles%\\" + folders + L"program.exe\" /open \"%1\"";
  for (auto _ : state) benchmark::DoNotOptimize(CommandLineToFilePath(files, command));
}

// The settings page, each setting with a text of that many characters.
void Settings(benchmark::State& state) {
  TestPlatform system;
  const std::wstring text(static_cast<std::size_t>(state.range(0)), L'x');
  for (const TWatchedSetting& setting : WatchedSettings()) {
    const auto* root =
        setting.root == RootKey::CurrentUser ? L"HKEY_CURRENT_USER" : L"HKEY_LOCAL_MACHINE";
    system.registry.Text(root + std::wstring(setting.keyPath), setting.valueName, text);
  }
  const EnglishMessages messages;
  TScanIeBrowser scanner(system.platform, messages, {});
  for (auto _ : state) {
    TListView list(L"list", nullptr, {}, {{L"Name", 200}, {L"Current Settings", 315}});
    scanner.ScanIeSettings(list);
    benchmark::DoNotOptimize(list.Count());
  }
}

// The last of that many columns.
void Fitting(benchmark::State& state) {
  TestPlatform system;
  std::vector<TListColumn> columns(static_cast<std::size_t>(state.range(0)), {L"Column", 100});
  TListView list(L"list", nullptr, {0, 0, 566, 323}, std::move(columns));
  for (auto _ : state) FitLastColumn(list, system.display);
}

// The first page with that many handlers.
void ShellScan(benchmark::State& state) {
  TestPlatform system;
  for (int entry = 0; entry < state.range(0); ++entry) {
    system.registry.Text(
        L"HKEY_LOCAL_MACHINE\\Software\\Classes\\*\\shellex\\ContextMenuHandlers\\"
        L"Entry " +
            std::to_wstring(entry),
        L"", L"{00000000-0000-4000-8000-000000000000}");
  }
  const EnglishMessages messages;
  for (auto _ : state) {
    TListView list(L"list", nullptr, {}, {{L"Type", 250}, {L"Item Name", 270}});
    ScanShellExtensions(system.platform, messages, list);
    benchmark::DoNotOptimize(list.Count());
  }
}

BENCHMARK(LanguageFile)->RangeMultiplier(10)->Range(100, 10000);
BENCHMARK(CommandLine)->RangeMultiplier(10)->Range(100, 10000);
BENCHMARK(Settings)->RangeMultiplier(10)->Range(100, 10000);
BENCHMARK(Fitting)->RangeMultiplier(10)->Range(10, 1000);
BENCHMARK(ShellScan)->RangeMultiplier(10)->Range(100, 10000);

}  // namespace
}  // namespace tarvelin
