// The Windows tests install add-ons, empty registry keys and replace files of Windows. They run
// only where somebody has said that the machine may be changed, which tests/run-wine.sh says of the
// prefix that it has just made.
#include <windows.h>

#include <gtest/gtest.h>

#include <cstdio>

int main(int argc, char** argv) {
  if (GetEnvironmentVariableW(L"TARVELIN_MAY_CHANGE_THIS_MACHINE", nullptr, 0) == 0) {
    std::fputs(
        "These tests change this machine's registry and files. Run them on one that is meant to "
        "be\n"
        "thrown away, with TARVELIN_MAY_CHANGE_THIS_MACHINE=1.\n",
        stderr);
    return 1;
  }
  ::testing::InitGoogleTest(&argc, argv);
  return RUN_ALL_TESTS();
}
