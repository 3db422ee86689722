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

TEST(RegistryEditorTest, CollapsesTheTreeAndGoesToTheFirstValueForAnEmptyPath) {
  FakeEditor editor;
  EXPECT_TRUE(OpenRegEditAt(editor, L"", L""));
  const Log tail(editor.log.end() - 7, editor.log.end());
  EXPECT_EQ(tail, (Log{L"pause 100", L"foreground 2", L"focus 2", L"foreground 3", L"focus 3",
                       L"pause 100", L"key 3 36"}));
}

TEST(RegistryEditorTest, StartsTheEditorWhenNoneRunsAndGivesUpWhenNoneComes) {
  FakeEditor editor;
  editor.running = false;
  EXPECT_TRUE(OpenRegEditAt(editor, L"\\k", L""));
  EXPECT_EQ(Log(editor.log.begin(), editor.log.begin() + 4),
            (Log{L"find RegEdit_RegEdit", L"start", L"find RegEdit_RegEdit", L"maximize 1"}));

  FakeEditor missing;
  missing.running = missing.starts = false;
  EXPECT_FALSE(OpenRegEditAt(missing, L"\\k", L""));
  EXPECT_EQ(missing.log, (Log{L"find RegEdit_RegEdit", L"start", L"find RegEdit_RegEdit"}));
}

TEST(RegistryEditorTest, PutsABackslashOnlyWhereOneIsMissing) {
  EXPECT_EQ(EnsureLeadingBackslash(L"a\\b"), L"\\a\\b");
  EXPECT_EQ(EnsureLeadingBackslash(L"\\a"), L"\\a");
  EXPECT_EQ(EnsureLeadingBackslash(L""), L"");
}

}  // namespace
}  // namespace tarvelin::testing
