#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <set>

#include "app/UnitMain.h"
#include "settings/UnitChangeSetting.h"
#include "tests/support/test_platform.h"

namespace tarvelin::testing {
namespace {

TExtIniFile Load(Bytes content) {
  FakeFiles files;
  files.files[L"x"] = std::move(content);
  TExtIniFile file;
  EXPECT_TRUE(file.LoadFromFile(files, L"x"));
  return file;
}

TExtIniFile Load(std::string_view content) {
  const auto bytes = std::as_bytes(std::span(content));
  return Load(Bytes(bytes.begin(), bytes.end()));
}

TEST(ExtIniFile, ReadsLinesAsTheyAreMeant) {
  using namespace std::string_view_literals;
  auto file = Load(
      "early=lost\n; [No]\n [ Sect ion ] \r\n\t Key  =  a = b; c \x1f\r\r\n;k=comment\nalone\n"
      "empty=\n[open\n=no name\nnul=a\0b\n[Other]\nkey=2\n[SECT ION]\nkey=later\nadded=3\n[]\nk=4"sv);
  EXPECT_EQ(file.ReadText(L"sect ion", L"KEY", L"?"), L"a = b; c");
  EXPECT_FALSE(file.ValueExists(L"Sect ion", L";k"));
  EXPECT_FALSE(file.ValueExists(L"", L"early"));
  EXPECT_EQ(file.ReadText(L"Sect ion", L"empty", L"?"), L"");
  EXPECT_TRUE(file.ValueExists(L"Sect ion", L"alone"));
  EXPECT_TRUE(file.ValueExists(L"Sect ion", L"[open"));
  EXPECT_EQ(file.ReadText(L"Sect ion", L"nul", L"?"), std::wstring(L"a\0b", 3));
  EXPECT_EQ(file.ReadText(L"Sect ion", L"added", L"?"), L"3");
  EXPECT_EQ(file.ReadText(L"Other", L"Key", L"?"), L"2");
  EXPECT_EQ(file.ReadText(L"", L"k", L"?"), L"4");
  EXPECT_EQ(file.ReadText(L"Missing", L"k", L"?"), L"?");

  file.WriteText(L"SECT ION", L"KEY", L"5");
  EXPECT_EQ(file.ReadText(L"Sect ion", L"key", L"?"), L"5");
  FakeFiles none;
  EXPECT_FALSE(file.LoadFromFile(none, L"gone"));
  EXPECT_FALSE(file.ValueExists(L"Sect ion", L"key"));
}

TEST(ExtIniFile, DecodesByTheByteOrderMark) {
  const std::wstring text = L"[Ä]\nö=ü€";
  Bytes little = ToUtf16Le(L"\xFEFF" + text);
  Bytes big = little;
  for (std::size_t i = 0; i + 1 < big.size(); i += 2) std::swap(big[i], big[i + 1]);
  for (const auto& file : {Load(little), Load(big), Load("\xEF\xBB\xBF" + ToUtf8(text))}) {
    EXPECT_EQ(file.ReadText(L"ä", L"Ö", L"?"), L"ü€");
  }
  EXPECT_EQ(Load("[s]\nk=\xE4").ReadText(L"s", L"k", L"?"), L"ä");  // ANSI
  for (const std::string_view hollow : {"", "\xEF\xBB\xBF", "\xFF\xFE", "\xFE\xFF", "\xFF"}) {
    EXPECT_FALSE(Load(hollow).ValueExists(L"", L""));
  }
}

TEST(ExtIniFile, TakesHugeFilesInLinearTime) {
  std::string content = "[s]\n";
  for (int i = 0; i < 40'000; ++i) content += "k" + std::to_string(i) + "=v\n";
  for (int i = 0; i < 20'000; ++i) content += "[s" + std::to_string(i) + "]\n";
  content += "[s]\nlong=" + std::string(4'000'000, 'x');
  const auto file = Load(content);
  EXPECT_EQ(file.ReadText(L"s", L"k39999", L"?"), L"v");
  EXPECT_EQ(file.ReadText(L"s", L"long", L"?").size(), 4'000'000u);
}

class Language : public ::testing::Test {
 protected:
  void Add(const std::wstring& fileName, std::string_view content) {
    files_.entries[L"D:\\L\\*.lng"].push_back(fileName);
    files_.Add(L"D:\\L\\" + fileName, content);
  }
  FakeFiles files_;
};

TEST_F(Language, LoadsByNameAndFallsBackToEnglish) {
  Add(L"English.lng", "[P_M]\nM_A=english\n");
  Add(L"German.LNG", "[Main]\nDisplayName=Deutsch\n[p_m]\nM_A=deutsch\nM_B=\n");
  Add(L"German.lngbak", "[P_M]\nM_A=backup\n");
  files_.entries[L"D:\\L\\*.lng"].push_back(L"Folder.lng");  // a directory: no file to load
  TLanguage language(files_, L"P", L"D:\\L\\");
  EXPECT_EQ(language.Names(), (std::vector<std::wstring>{L"English", L"German", L"Folder"}));
  EXPECT_EQ(language.DisplayNames()[1], L"Deutsch");
  files_.entries.clear();
  EXPECT_EQ(TLanguage(files_, L"P", L"D:\\L").Index(), -1);

  language.Load(L"gERMAN");
  EXPECT_EQ(language.Index(), 1);
  EXPECT_EQ(language.Message(L"M_A", L"?"), L"deutsch");
  EXPECT_EQ(language.Message(L"M_B", L"?"), L"");  // present and empty is a text of its own
  EXPECT_EQ(language.Message(L"M_C", L"built in"), L"built in");
  for (const wchar_t* unusable : {L"Klingon", L"", L"German.lngbak", L"..\\L\\German", L"Folder"}) {
    language.Load(L"German");
    language.Load(unusable);
    EXPECT_EQ(language.Message(L"M_A", L"?"), L"english") << ToUtf8(unusable);
    EXPECT_EQ(language.Index(), 0);
  }
  language.Load(L"German");
  files_.files.erase(L"D:\\L\\English.lng");
  language.Load(L"Klingon");
  EXPECT_EQ(language.Message(L"M_A", L"?"), L"deutsch");
}

TEST_F(Language, SurvivesABrokenSettingsFile) {
  struct BrokenFiles : FakeFiles {
    std::wstring ReadProfileText(const std::wstring&, const std::wstring&, const std::wstring&,
                                 const std::wstring&) override {
      throw std::runtime_error("unreadable");
    }
  } broken;
  EXPECT_EQ(TLanguage(broken, L"P", L"D:\\L").ReadLanguageName(L"x", L"Main", L"Language"), L"");
  EXPECT_EQ(TLanguage(files_, L"P", L"D:\\L").ReadLanguageName(L"x", L"Main", L"Language"),
            L"English");
}

using Texts = std::map<std::wstring, std::wstring>;

std::wstring ReadUtf8(const std::filesystem::path& path) {
  std::ifstream stream(path, std::ios::binary);
  const std::string content{std::istreambuf_iterator<char>(stream), {}};
  return FromUtf8(std::as_bytes(std::span(content)));
}

// The text of the C++ literals that stand next to each other at `position`, which moves behind.
std::wstring Literals(const std::wstring& source, std::size_t& position) {
  std::wstring text;
  for (;;) {
    const auto start = source.find_first_not_of(L" \n", position);
    if (start == std::wstring::npos || source.compare(start, 2, L"L\"") != 0) return text;
    for (position = start + 2; source.at(position) != L'"'; ++position) {
      if (source[position] == L'\\') ++position;
      text += source.at(position);
    }
    ++position;
  }
}

// Every message key in the product's sources with the English text that follows it; where something
// else follows, the text is empty.
Texts MessagesInSources() {
  Texts messages;
  const auto top = std::filesystem::path(TARVELIN_RESOURCES_DIR).parent_path();
  for (const char* folder : {"common", "widgets", "addons", "shellmenu", "settings", "app"}) {
    for (const auto& entry : std::filesystem::directory_iterator(top / folder)) {
      const std::wstring source = ReadUtf8(entry.path());
      for (std::size_t at = 0; (at = source.find(L"L\"M_", at)) != std::wstring::npos;) {
        const std::wstring key = Literals(source, at);
        std::wstring text;
        if (source.at(at) == L',') text = Literals(source, ++at);
        std::wstring& known = messages[key];
        if (known.empty()) {
          known = text;
        } else if (!text.empty() && known != text) {
          known = L"(worded differently)";
        }
      }
    }
  }
  return messages;
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

Texts Section(const std::string& language, std::wstring_view section) {
  const auto path = TARVELIN_RESOURCES_DIR "/languages/" + language + ".lng";
  TValueLines lines;
  Load(ToUtf8(ReadUtf8(path))).ReadSectionValues(section, lines);
  return {lines.Lines().begin(), lines.Lines().end()};
}

// English repeats the built-in texts, German has one for each, and neither has a key too many.
void ExpectComplete(std::wstring_view section, const Texts& builtIn,
                    const std::set<std::wstring>& notInEnglish = {}) {
  const Texts english = Section("English", section);
  Texts german = Section("German", section);
  EXPECT_EQ(german.size(), builtIn.size());
  EXPECT_EQ(english.size(), builtIn.size() - notInEnglish.size());
  for (const auto& [key, text] : builtIn) {
    EXPECT_FALSE(german[key].empty()) << ToUtf8(key);
    if (notInEnglish.contains(key)) continue;
    ASSERT_TRUE(english.contains(key)) << ToUtf8(key);
    EXPECT_TRUE(text.empty() || english.at(key) == text) << ToUtf8(key);
    EXPECT_EQ(german[key].find(L"%s") == std::wstring::npos, text.find(L"%s") == std::wstring::npos)
        << ToUtf8(key);
  }
}

TEST(LanguageFiles, HaveEveryTextOfTheProgram) {
  TestPlatform world;
  TApplication application(world.boxes, L"Tarvelin");
  TFormMain formMain(world.platform, application, L"C:\\Program\\");
  TFormChange formChange(world.platform, formMain.lvHijack(), [] {});
  ExpectComplete(L"Tarvelin_FormMain", TextsOfWindow(formMain));
  ExpectComplete(L"Tarvelin_FormChange", TextsOfWindow(formChange));
  // These two are worded differently by different pages, which one text in a file would replace.
  ExpectComplete(L"Tarvelin_M", MessagesInSources(), {L"M_Remove_Success", L"M_Select_None"});
}

}  // namespace
}  // namespace tarvelin::testing
