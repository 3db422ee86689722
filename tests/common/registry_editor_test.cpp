#include "common/registry_editor.h"

#include <gtest/gtest.h>

#include "tests/support/test_platform.h"

namespace tarvelin::testing {
namespace {

using Log = std::vector<std::wstring>;

TEST(RegistryEditorTest, TypesTheKeyIntoTheTreeAndTheValueIntoTheList) {
  FakeEditor editor;
  EXPECT_TRUE(OpenRegEditAt(editor, L"Ab\\c", L"val"));
  Log expected{L"find RegEdit_RegEdit", L"maximize 1", L"foreground 1"};
  expected.insert(expected.end(), 20, L"key 2 37");
  const Log rest{L"pause 100",    L"foreground 2", L"focus 2",   L"key 2 39",  L"pause 100",
                 L"char 2 A",     L"char 2 b",     L"key 2 39",  L"pause 100", L"char 2 c",
                 L"foreground 3", L"focus 3",      L"pause 100", L"key 3 36",  L"char 3 V",
                 L"char 3 A",     L"char 3 L"};
  expected.insert(expected.end(), rest.begin(), rest.end());
  EXPECT_EQ(editor.log, expected);
}

TEST(RegistryEditorTest, StartsTheEditorWhenNoneRunsAndGivesUpWhenNoneComes) {
  for (const bool starts : {true, false}) {
    FakeEditor editor;
    editor.running = false;
    editor.starts = starts;
    EXPECT_EQ(OpenRegEditAt(editor, L"", L""), starts);
    EXPECT_EQ(editor.log.size(), starts ? 3 + 2 + 20 + 3 + 4 : 3) << "and nothing is typed";
    EXPECT_EQ(editor.log[1], L"start");
  }
}

}  // namespace
}  // namespace tarvelin::testing
