// Message boxes.
#pragma once

#include <cstdint>
#include <string>

namespace tarvelin {

// MessageBoxW, owned by the active window of the program.
class MessageBoxes {
 public:
  virtual ~MessageBoxes() = default;
  virtual int Show(const std::wstring& text, const std::wstring& caption, std::uint32_t flags) = 0;
};

// The flags and answers of MessageBoxW that the program uses.
inline constexpr std::uint32_t kBoxOk = 0x0;
inline constexpr std::uint32_t kBoxError = 0x10;          // MB_OK | MB_ICONERROR
inline constexpr std::uint32_t kBoxYesNoQuestion = 0x24;  // MB_YESNO | MB_ICONQUESTION
inline constexpr int kAnswerOk = 1;
inline constexpr int kAnswerYes = 6;
inline constexpr int kAnswerNo = 7;

}  // namespace tarvelin
