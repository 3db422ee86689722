// The main window: the navigation bar, ten pages with a list each, and the commands on their rows.
#pragma once

#include <array>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "addons/UnitIEBrowserHelp.h"
#include "app/PLanguage.h"
#include "app/application.h"
#include "common/platform.h"
#include "widgets/PImageNote.h"
#include "widgets/PPageNote.h"
#include "widgets/components.h"
#include "widgets/navigation.h"

namespace tarvelin {

class TFormMain : public TForm {
 public:
  // `executableFolder` ends in a backslash. The platform and the application outlive the window.
  TFormMain(TPlatform& platform, TApplication& application, std::wstring_view executableFolder);
  ~TFormMain() override;

  void FormCreate(std::wstring_view executableFolder);
  void FormShow();
  void FormClose();

  // Applies the language to every window of the application.
  void TranslateWindows();

  // The dialog that changes one setting, once it exists.
  void SetFormChange(TForm& form) { formChange_ = &form; }

 private:
  TForm* formChange_ = nullptr;
};

}  // namespace tarvelin
