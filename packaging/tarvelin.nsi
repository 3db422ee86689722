; The installer of one build. package.sh defines
;   VERSION  for example 1.0.0     ARCH     x64 or x86
;   STAGE    the folder with what is installed, and with files.nsh, languages.nsh and the pictures
;   OUTPUT   the installer to write
; Silent: /S, and last and without quotes /D=folder. Exit codes: 0, 1 cancelled, 2 failed, and 32
; (which Windows uses for a file in use) when Tarvelin runs.
Target ${TARGET}
SetCompressor /SOLID lzma

!include MUI2.nsh
!include LogicLib.nsh

!define UNINSTALL "Software\Microsoft\Windows\CurrentVersion\Uninstall\Tarvelin"
!define IN_USE 32

!if ${ARCH} == x64
  !define NAME "Tarvelin"
  !define VIEW 64
  InstallDir "$PROGRAMFILES64\Tarvelin"
!else
  ; It shows what 32-bit programs have added; both may be installed on one machine.
  !define NAME "Tarvelin (32-bit)"
  !define VIEW 32
  InstallDir "$PROGRAMFILES32\Tarvelin"
!endif
Name "${NAME}"
OutFile "${OUTPUT}"
InstallDirRegKey HKLM "${UNINSTALL}" "InstallLocation"
RequestExecutionLevel admin
ManifestSupportedOS all
ManifestDPIAware true
BrandingText "Tarvelin ${VERSION}"
!ifdef SIGN
  !uninstfinalize '${SIGN} "%1"' = 0
!endif

VIProductVersion ${VERSION}.0
VIFileVersion ${VERSION}.0
VIAddVersionKey ProductName "${NAME}"
VIAddVersionKey ProductVersion "${VERSION}"
VIAddVersionKey FileVersion "${VERSION}.0"
VIAddVersionKey FileDescription "${NAME} Setup"
VIAddVersionKey CompanyName "The Tarvelin authors"
VIAddVersionKey LegalCopyright "Copyright (C) The Tarvelin authors"

!define MUI_ICON "${STAGE}\tarvelin.ico"
!define MUI_UNICON "${STAGE}\tarvelin.ico"
!define MUI_HEADERIMAGE
!define MUI_HEADERIMAGE_RIGHT
!define MUI_HEADERIMAGE_BITMAP "${STAGE}\header.bmp"
!define MUI_WELCOMEFINISHPAGE_BITMAP "${STAGE}\welcome.bmp"
!define MUI_UNWELCOMEFINISHPAGE_BITMAP "${STAGE}\welcome.bmp"
!define MUI_ABORTWARNING
!define MUI_FINISHPAGE_NOAUTOCLOSE
!insertmacro MUI_PAGE_WELCOME
!insertmacro MUI_PAGE_LICENSE "${STAGE}\license.txt"
!insertmacro MUI_PAGE_DIRECTORY
!insertmacro MUI_PAGE_INSTFILES
!insertmacro MUI_PAGE_FINISH
!insertmacro MUI_UNPAGE_CONFIRM
!insertmacro MUI_UNPAGE_INSTFILES
!include "${STAGE}\languages.nsh"

; The program is running when its mutex, which bears the name of its file, is there (in this
; session) or when its file cannot be written (in any). The old program is never left in place
; beside new files: the user closes it, or nothing is changed.
!macro REFUSE_WHILE_RUNNING un
  Function ${un}RefuseWhileRunning
    ${Do}
      StrCpy $1 ""
      System::Call 'kernel32::OpenMutexW(i 0x100000, i 0, w "Tarvelin.exe") p .r0'
      ${If} $0 P<> 0
        System::Call 'kernel32::CloseHandle(p r0)'
        StrCpy $1 "runs"
      ${ElseIf} ${FileExists} "$INSTDIR\Tarvelin.exe"
        ClearErrors
        FileOpen $0 "$INSTDIR\Tarvelin.exe" a
        ${If} ${Errors}
          StrCpy $1 "is in use"
        ${Else}
          FileClose $0
        ${EndIf}
      ${EndIf}
      ${If} $1 == ""
        Return
      ${EndIf}
      MessageBox MB_RETRYCANCEL|MB_ICONEXCLAMATION "$(Running)" /SD IDCANCEL IDRETRY again
      SetErrorLevel ${IN_USE}
      Quit
      again:
    ${Loop}
  FunctionEnd
!macroend
!insertmacro REFUSE_WHILE_RUNNING ""
!insertmacro REFUSE_WHILE_RUNNING "un."

Function .onInit
  SetRegView ${VIEW}
FunctionEnd

Function un.onInit
  SetRegView ${VIEW}
FunctionEnd

Section
  Call RefuseWhileRunning
  !include "${STAGE}\files.nsh"
  WriteUninstaller "$INSTDIR\Uninstall.exe"

  SetShellVarContext all
  SetOutPath "$INSTDIR"
  CreateShortcut "$SMPROGRAMS\${NAME}.lnk" "$INSTDIR\Tarvelin.exe"
  WriteRegStr HKLM "${UNINSTALL}" "DisplayName" "${NAME}"
  WriteRegStr HKLM "${UNINSTALL}" "DisplayVersion" "${VERSION}"
  WriteRegStr HKLM "${UNINSTALL}" "DisplayIcon" "$INSTDIR\Tarvelin.exe"
  WriteRegStr HKLM "${UNINSTALL}" "Publisher" "The Tarvelin authors"
  WriteRegStr HKLM "${UNINSTALL}" "InstallLocation" "$INSTDIR"
  WriteRegStr HKLM "${UNINSTALL}" "UninstallString" '"$INSTDIR\Uninstall.exe"'
  WriteRegStr HKLM "${UNINSTALL}" "QuietUninstallString" '"$INSTDIR\Uninstall.exe" /S'
  WriteRegDWORD HKLM "${UNINSTALL}" "EstimatedSize" ${KILOBYTES}
  WriteRegDWORD HKLM "${UNINSTALL}" "NoModify" 1
  WriteRegDWORD HKLM "${UNINSTALL}" "NoRepair" 1

  ; The suite's programs read their language from one file of the user's. What stands there, an
  ; empty language included, is the user's choice.
  SetShellVarContext current
  ClearErrors
  ReadINIStr $0 "$APPDATA\Corvane\Halvicore V4\Main.ini" "Main" "Language"
  ${If} ${Errors}
    CreateDirectory "$APPDATA\Corvane\Halvicore V4"
    WriteINIStr "$APPDATA\Corvane\Halvicore V4\Main.ini" "Main" "Language" "$(Language)"
  ${EndIf}
SectionEnd

Section Uninstall
  Call un.RefuseWhileRunning
  !include "${STAGE}\unfiles.nsh"
  Delete "$INSTDIR\Uninstall.exe"
  ; Only when nothing else lies there.
  RMDir "$INSTDIR\Toolbox_Language"
  RMDir "$INSTDIR"
  SetShellVarContext all
  Delete "$SMPROGRAMS\${NAME}.lnk"
  DeleteRegKey HKLM "${UNINSTALL}"
SectionEnd
