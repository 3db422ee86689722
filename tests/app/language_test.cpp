#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "app/UnitMain.h"
#include "settings/UnitChangeSetting.h"
#include "tests/support/test_platform.h"

namespace tarvelin::testing {
namespace {

TExtIniFile Load(std::string_view content) {
  FakeFiles files;
  files.Add(L"x", content);
  TExtIniFile file;
  EXPECT_TRUE(file.LoadFromFile(files, L"x"));
  return file;
}

TEST(ExtIniFile, ReadsLinesAsTheyAreMeant) {
  using namespace std::string_view_literals;
  auto file = Load(
      "early=lost\n; [No]\n [ Sect ion ] \r\n\t Key  =  a = b; c \x1f\r\r\n;k=comment\nalone\n"
      "[open\nnul=a\0b\n[Other]\nkey=2\n[SECT ION]\nkey=later\nadded=3\n[]\nk=4"sv);
  const std::tuple<const wchar_t*, const wchar_t*, std::wstring> texts[] = {
      {L"sect ion", L"KEY", L"a = b; c"},
      {L"Sect ion", L";k", L"?"},
      {L"", L"early", L"?"},
      {L"Sect ion", L"alone", L""},
      {L"Sect ion", L"[open", L""},
      {L"Sect ion", L"nul", std::wstring(L"a\0b", 3)},
      {L"Sect ion", L"added", L"3"},
      {L"Other", L"Key", L"2"},
      {L"", L"k", L"4"},
      {L"Missing", L"k", L"?"}};
  for (const auto& [section, key, text] : texts) {
    EXPECT_EQ(file.ReadText(section, key, L"?"), text) << ToUtf8(key);
  }
  file.WriteText(L"SECT ION", L"KEY", L"5");
  EXPECT_EQ(file.ReadText(L"Sect ion", L"key", L"?"), L"5");
  FakeFiles none;
  EXPECT_FALSE(file.LoadFromFile(none, L"gone"));
  EXPECT_FALSE(file.ValueExists(L"Sect ion", L"key"));
}

TEST(ExtIniFile, DecodesByTheByteOrderMark) {
  EXPECT_EQ(Load({"\xFE\xFF\0[\0s\0]\0\n\0k\0=\x20\xAC", 16}).ReadText(L"S", L"K", L"?"), L"€");
  EXPECT_EQ(Load({"\xFF\xFE[\0s\0]\0\n\0k\0=\0\xAC\x20", 16}).ReadText(L"S", L"K", L"?"), L"€");
  EXPECT_EQ(Load("\xEF\xBB\xBF[Ä]\nö=ü€").ReadText(L"ä", L"Ö", L"?"), L"ü€");
  EXPECT_EQ(Load("[s]\nk=\xE4").ReadText(L"s", L"k", L"?"), L"ä");  // ANSI
  for (const std::string_view hollow : {"", "\xEF\xBB\xBF", "\xFF\xFE", "\xFE\xFF", "\xFF"}) {
    EXPECT_FALSE(Load(hollow).ValueExists(L"", L""));
  }
}

TEST(ExtIniFile, TakesHugeFilesInLinearTime) {
  std::string content;
  for (int i = 0; i < 5'000; ++i) content += "[s" + std::to_string(i) + "]\n";
  for (int i = 0; i < 10'000; ++i) content += "k" + std::to_string(i) + "=v\n";
  const auto file = Load(content + "long=" + std::string(500'000, 'x'));
  EXPECT_EQ(file.ReadText(L"s4999", L"k9999", L"?"), L"v");
  EXPECT_EQ(file.ReadText(L"s4999", L"long", L"?").size(), 500'000U);
}

TEST(Language, LoadsByNameAndFallsBackToEnglish) {
  FakeFiles files;
  const auto add = [&](const std::wstring& name, std::string_view content) {
    files.entries[L"D:\\L\\*.lng"].push_back(name);
    files.Add(L"D:\\L\\" + name, content);
  };
  add(L"English.lng", "[P_M]\nM_A=english\n");
  add(L"German.LNG", "[Main]\nDisplayName=Deutsch\n[p_m]\nM_A=deutsch\nM_B=\n");
  add(L"German.lngbak", "[P_M]\nM_A=backup\n");
  files.entries[L"D:\\L\\*.lng"].push_back(L"Folder.lng");  // a directory: no file to load
  TLanguage language(files, L"P", L"D:\\L\\");
  EXPECT_EQ(language.Names(), (std::vector<std::wstring>{L"English", L"German", L"Folder"}));
  EXPECT_EQ(language.DisplayNames()[1], L"Deutsch");
  language.Load(L"gERMAN");
  EXPECT_EQ(language.Index(), 1);
  EXPECT_EQ(language.Message({L"M_B", L"?"}), L"") << "present and empty is a text of its own";
  EXPECT_EQ(language.Message({L"M_C", L"built in"}), L"built in");
  for (const wchar_t* unusable : {L"Klingon", L"", L"German.lngbak", L"..\\L\\German", L"Folder"}) {
    language.Load(L"German");
    EXPECT_EQ(language.Message({L"M_A", L"?"}), L"deutsch");
    language.Load(unusable);
    EXPECT_EQ(language.Message({L"M_A", L"?"}), L"english") << ToUtf8(unusable);
  }
  files.files.erase(L"D:\\L\\English.lng");
  language.Load(L"German");
  language.Load(L"Klingon");
  EXPECT_EQ(language.Message({L"M_A", L"?"}), L"deutsch");
}

using Texts = std::map<std::wstring, std::wstring>;

std::string ReadFile(const std::filesystem::path& path) {
  std::ifstream stream(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(stream), {}};
}

Texts TextsOfWindow(TForm& form) {
  Texts texts{{form.Name() + L".Caption", form.Caption()}};
  for (const auto& component : form.Components()) {
    for (const auto& text : component->TranslatableTexts()) {
      texts[component->Name() + text.keySuffix] = text.current;
    }
    const auto* bar = dynamic_cast<TGroupBar*>(component.get());
    for (const TGroup* group : bar ? bar->Groups() : std::vector<TGroup*>()) {
      for (std::size_t item = 0; item < group->Items().size(); ++item) {
        texts[group->Name() + L".Items[" + std::to_wstring(item) + L"].Caption"] =
            group->Items()[item]->Caption();
      }
    }
  }
  return texts;
}

Texts Messages() {
  Texts texts;
  for (const Text& text : messages::kAll) texts.emplace(text.key, text.english);
  return texts;
}

std::size_t Names(std::wstring_view text) {
  std::size_t count = 0;
  for (auto at = text.find(L"%s"); at != text.npos; at = text.find(L"%s", at + 1)) ++count;
  return count;
}

TEST(LanguageFiles, HaveEveryTextOfTheProgramAndNoOther) {
  TestPlatform world;
  TApplication application(world.boxes, L"Tarvelin");
  TFormMain formMain(world.platform, application, L"C:\\Program\\");
  TFormChange formChange(world.platform, formMain.lvHijack(), [] {});
  const std::map<std::wstring, Texts> sections{{L"Tarvelin_FormMain", TextsOfWindow(formMain)},
                                               {L"Tarvelin_FormChange", TextsOfWindow(formChange)},
                                               {L"Tarvelin_M", Messages()}};
  int files = 0;
  for (const auto& entry :
       std::filesystem::directory_iterator(TARVELIN_RESOURCES_DIR "/languages")) {
    SCOPED_TRACE(entry.path().filename().string());
    ++files;
    const std::string bytes = ReadFile(entry.path());
    EXPECT_TRUE(bytes.starts_with("\xEF\xBB\xBF"));
    const TExtIniFile file = Load(bytes);
    EXPECT_TRUE(file.ValueExists(L"Main", L"DisplayName"));
    const bool isEnglish = entry.path().stem() == "English";
    for (const auto& [section, builtIn] : sections) {
      TValueLines lines;
      file.ReadSectionValues(section, lines);
      Texts missing = builtIn;
      for (const auto& [key, text] : lines.Lines()) {
        ASSERT_TRUE(builtIn.contains(key)) << "unknown: " << ToUtf8(key);
        EXPECT_EQ(missing.erase(key), 1U) << "twice: " << ToUtf8(key);
        const std::wstring& english = builtIn.at(key);
        EXPECT_EQ(Names(text), Names(english)) << ToUtf8(key);
        EXPECT_FALSE(text.empty()) << ToUtf8(key);
        EXPECT_TRUE(!isEnglish || text == english) << ToUtf8(key);
        // The program appends a question mark.
        const bool asks = key == L"M_Remove_Warning";
        EXPECT_TRUE(!asks || text.find_first_of(L"?\uFF1F") == text.npos) << ToUtf8(text);
      }
      // Each of these has two built-in texts, which one in English.lng would replace.
      if (isEnglish)
        std::erase_if(missing, [](const auto& text) {
          return text.first == L"M_Remove_Success" || text.first == L"M_Select_None";
        });
      for (const auto& text : missing) ADD_FAILURE() << "missing: " << ToUtf8(text.first);
    }
  }
  EXPECT_EQ(files, 13);
}

}  // namespace
}  // namespace tarvelin::testing
