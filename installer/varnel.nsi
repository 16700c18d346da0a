; VarnelSetup.exe: installs, updates and removes Varnel. Built by ./dev package with
;   makensis -INPUTCHARSET UTF8 -DSOURCE=<folder with the files of bin> -DOUTPUT=<VarnelSetup.exe> -DVERSION=<x.y.z> installer/varnel.nsi
; Switches: /S (silent), /D=<folder> (last; only if Varnel is not installed yet), /NOSERVICE (without the helper service),
; --update-restart (silent; waits for the running program, replaces it and starts it again for the user; adds no helper service if there
; is none), --uninstall (asks, then removes the installed files).
; Exit codes: 0 done, 1 cancelled or not installed, 2 the running program did not end in time, 3 a file could not be replaced, 4 the
; helper service could not be set up.

Unicode true
Target amd64-unicode
ManifestDPIAware true
RequestExecutionLevel admin
SetCompressor /SOLID lzma

!include MUI2.nsh
!include FileFunc.nsh
!include LogicLib.nsh
!include Sections.nsh

!define PRODUCT "Varnel"
!define UNINSTALL_KEY "Software\Microsoft\Windows\CurrentVersion\Uninstall\Varnel"
!define RUNTIME_KEY "Software\Microsoft\EdgeUpdate\ClientState\{F3017226-FE2A-4295-8BDF-00C3A9A7E4C5}"
!define WAIT_STEP_MS 250
!define WAIT_STEPS 120 ; 30 s

Name "${PRODUCT}"
OutFile "${OUTPUT}"
InstallDir "$PROGRAMFILES64\${PRODUCT}"
ShowInstDetails nevershow
BrandingText "${PRODUCT} ${VERSION}"

VIProductVersion "${VERSION}.0"
VIAddVersionKey "ProductName" "${PRODUCT}"
VIAddVersionKey "ProductVersion" "${VERSION}"
VIAddVersionKey "FileVersion" "${VERSION}"
VIAddVersionKey "FileDescription" "${PRODUCT} Setup"
VIAddVersionKey "LegalCopyright" ""

!define MUI_ICON "${ICON}"
!define MUI_UNICON "${ICON}"
!define MUI_FINISHPAGE_RUN
!define MUI_FINISHPAGE_RUN_FUNCTION StartForUser
!insertmacro MUI_PAGE_WELCOME
!define MUI_PAGE_CUSTOMFUNCTION_PRE SkipWhenInstalled
!insertmacro MUI_PAGE_DIRECTORY
!insertmacro MUI_PAGE_COMPONENTS
!insertmacro MUI_PAGE_INSTFILES
!insertmacro MUI_PAGE_FINISH
!define MUI_CUSTOMFUNCTION_UNGUIINIT un.ComeToFront
!insertmacro MUI_UNPAGE_CONFIRM
!insertmacro MUI_UNPAGE_INSTFILES
!insertmacro MUI_LANGUAGE "English"
!insertmacro MUI_LANGUAGE "Czech"

LangString RUNNING ${LANG_ENGLISH} "Varnel is still running. Close it, then try again."
LangString RUNNING ${LANG_CZECH} "Varnel je stále spuštěný. Ukončete ho a zkuste to znovu."
LangString NO_RUNTIME ${LANG_ENGLISH} "Varnel shows its window with the Microsoft Edge WebView2 Runtime, which is not installed on this computer.$\r$\n$\r$\nInstall the free $\"Evergreen WebView2 Runtime$\" (x64) from Microsoft, then start Varnel."
LangString NO_RUNTIME ${LANG_CZECH} "Varnel zobrazuje své okno pomocí součásti Microsoft Edge WebView2 Runtime, která v tomto počítači není nainstalovaná.$\r$\n$\r$\nNainstalujte bezplatný $\"Evergreen WebView2 Runtime$\" (x64) od společnosti Microsoft a potom Varnel spusťte."
LangString NOT_INSTALLED ${LANG_ENGLISH} "Varnel is not installed on this computer."
LangString NOT_INSTALLED ${LANG_CZECH} "Varnel v tomto počítači není nainstalovaný."

LangString SERVICE ${LANG_ENGLISH} "Helper service"
LangString SERVICE ${LANG_CZECH} "Pomocná služba"
LangString ABOUT_SERVICE ${LANG_ENGLISH} "Does what needs administrator rights, for administrators of this computer only: the hosts file, variables and start-up programs of all users, protected junk, drivers, repairs. Varnel also works without it."
LangString ABOUT_SERVICE ${LANG_CZECH} "Dělá to, k čemu jsou potřeba práva správce, a to jen pro správce tohoto počítače: soubor hosts, proměnné a programy po spuštění všech uživatelů, chráněné nepotřebné soubory, ovladače, opravy. Varnel funguje i bez ní."
LangString NO_SERVICE ${LANG_ENGLISH} "The helper service could not be set up. It needs a folder that only administrators may change, such as Program Files."
LangString NO_SERVICE ${LANG_CZECH} "Pomocnou službu se nepodařilo nastavit. Potřebuje složku, kterou smí měnit jen správci, například Program Files."

Var update_restart

Function Prepare
  SetRegView 64
  SetShellVarContext all
  ; Updates Varnel in its present folder. (InstallDirRegKey would read the 32-bit registry view.)
  ReadRegStr $0 HKLM "${UNINSTALL_KEY}" "InstallLocation"
  ${If} $0 != ""
    StrCpy $INSTDIR $0
  ${EndIf}

  ${GetParameters} $1
  ClearErrors
  ${GetOptions} $1 "--uninstall" $2
  ${IfNot} ${Errors}
    Call StartUninstaller
    Quit
  ${EndIf}
  ClearErrors
  ${GetOptions} $1 "--update-restart" $2
  ${IfNot} ${Errors}
    StrCpy $update_restart 1
    SetSilent silent
  ${EndIf}
FunctionEnd

; Runs a fresh copy from a folder that only administrators may write to, because others may be able to replace
; the installed one.
!macro SERVICE arguments
  InitPluginsDir
  File "/oname=$PLUGINSDIR\VarnelService.exe" "${SOURCE}/VarnelService.exe"
  nsExec::Exec '"$PLUGINSDIR\VarnelService.exe" ${arguments}'
  Pop $R2
!macroend

Function SkipWhenInstalled
  ${If} ${FileExists} "$INSTDIR\uninstall.exe"
    Abort
  ${EndIf}
FunctionEnd

; Leaves the work to the uninstaller, which runs from a temporary copy, because this copy in bin is itself to
; be removed.
Function StartUninstaller
  SetErrorLevel 0 ; otherwise leaving .onInit counts as a failure
  ${IfNot} ${FileExists} "$INSTDIR\uninstall.exe"
    MessageBox MB_OK|MB_ICONEXCLAMATION "$(NOT_INSTALLED)" /SD IDOK
    SetErrorLevel 1
    Return
  ${EndIf}
  ${If} ${Silent}
    Exec '"$INSTDIR\uninstall.exe" /S'
  ${Else}
    Exec '"$INSTDIR\uninstall.exe"'
  ${EndIf}
FunctionEnd

; Waits until the installed program can be replaced. A running image cannot be opened for writing.
!macro WAIT_UNTIL_CLOSED prefix
Function ${prefix}WaitUntilClosed
  again:
  StrCpy $R0 0
  ${DoWhile} $R0 < ${WAIT_STEPS}
    ${IfNot} ${FileExists} "$INSTDIR\bin\Varnel.exe"
      Return
    ${EndIf}
    ClearErrors
    FileOpen $R1 "$INSTDIR\bin\Varnel.exe" a
    ${IfNot} ${Errors}
      FileClose $R1
      Return
    ${EndIf}
    ${IfNot} ${Silent}
      ${Break}
    ${EndIf}
    Sleep ${WAIT_STEP_MS}
    IntOp $R0 $R0 + 1
  ${Loop}
  MessageBox MB_RETRYCANCEL|MB_ICONEXCLAMATION "$(RUNNING)" /SD IDCANCEL IDRETRY again
  !if "${prefix}" == ""
    ${If} $update_restart == 1 ; another copy runs, and the user's own ended for the update
      Call StartForUser
    ${EndIf}
  !endif
  SetErrorLevel 2
  Quit
FunctionEnd
!macroend
!insertmacro WAIT_UNTIL_CLOSED ""
!insertmacro WAIT_UNTIL_CLOSED "un."

; Has Explorer start the program with the user's own rights, because this setup runs elevated.
Function StartForUser
  Exec '"$WINDIR\explorer.exe" "$INSTDIR\bin\Varnel.exe"'
FunctionEnd

Function WarnIfNoRuntime
  SetRegView 32
  ReadRegStr $0 HKLM "${RUNTIME_KEY}" "EBWebView"
  ${If} $0 == ""
    ReadRegStr $0 HKCU "${RUNTIME_KEY}" "EBWebView"
  ${EndIf}
  SetRegView 64
  ${If} $0 == ""
    MessageBox MB_OK|MB_ICONINFORMATION "$(NO_RUNTIME)" /SD IDOK
  ${EndIf}
FunctionEnd

Section "${PRODUCT}" section_program
  SectionIn RO
  Call WaitUntilClosed
  ${If} ${FileExists} "$INSTDIR\bin\VarnelService.exe"
    !insertmacro SERVICE --stop
  ${EndIf}
  SetOutPath "$INSTDIR\bin"
  ClearErrors
  File "${SOURCE}/Varnel.exe"
  File "${SOURCE}/check_updates.ps1"
  File "${SOURCE}/update_driver.ps1"
  File "${SOURCE}/THIRD_PARTY_NOTICES.txt"
  ; The program starts this copy to uninstall itself. An update replaces it with the newer setup.
  ${If} $EXEPATH != "$INSTDIR\bin\VarnelSetup.exe"
    CopyFiles /SILENT "$EXEPATH" "$INSTDIR\bin\VarnelSetup.exe"
  ${EndIf}
  ${If} ${Errors}
    SetErrorLevel 3
  ${EndIf}

  ; The settings are beside bin. The program runs without elevation, so ordinary users (S-1-5-32-545) may
  ; write this one file. An empty file means the program's defaults.
  SetOutPath "$INSTDIR"
  ${IfNot} ${FileExists} "$INSTDIR\settings.json"
    FileOpen $0 "$INSTDIR\settings.json" w
    FileClose $0
  ${EndIf}
  nsExec::Exec '"$SYSDIR\icacls.exe" "$INSTDIR\settings.json" /grant *S-1-5-32-545:M'
  Pop $0

  CreateShortcut "$SMPROGRAMS\${PRODUCT}.lnk" "$INSTDIR\bin\Varnel.exe"

  WriteUninstaller "$INSTDIR\uninstall.exe"
  WriteRegStr HKLM "${UNINSTALL_KEY}" "DisplayName" "${PRODUCT}"
  WriteRegStr HKLM "${UNINSTALL_KEY}" "DisplayVersion" "${VERSION}"
  WriteRegStr HKLM "${UNINSTALL_KEY}" "DisplayIcon" "$INSTDIR\bin\Varnel.exe"
  WriteRegStr HKLM "${UNINSTALL_KEY}" "Publisher" "${PRODUCT}"
  WriteRegStr HKLM "${UNINSTALL_KEY}" "InstallLocation" "$INSTDIR"
  WriteRegStr HKLM "${UNINSTALL_KEY}" "UninstallString" '"$INSTDIR\uninstall.exe"'
  WriteRegStr HKLM "${UNINSTALL_KEY}" "QuietUninstallString" '"$INSTDIR\uninstall.exe" /S'
  WriteRegDWORD HKLM "${UNINSTALL_KEY}" "NoModify" 1
  WriteRegDWORD HKLM "${UNINSTALL_KEY}" "NoRepair" 1
SectionEnd

Section "$(SERVICE)" section_service
  SetOutPath "$INSTDIR\bin"
  ClearErrors
  File "${SOURCE}/VarnelService.exe"
  ${If} ${Errors}
    SetErrorLevel 3
  ${EndIf}
  SetOutPath "$INSTDIR"
  !insertmacro SERVICE '--install "$INSTDIR\bin"'
  ${If} $R2 != 0
    MessageBox MB_OK|MB_ICONEXCLAMATION "$(NO_SERVICE)" /SD IDOK
    GetErrorLevel $0
    ${If} $0 <= 0 ; a file that could not be replaced is the more useful code
      SetErrorLevel 4
    ${EndIf}
  ${EndIf}
SectionEnd

Section "-Finish"
  ${IfNot} ${SectionIsSelected} ${section_service}
  ${AndIf} ${FileExists} "$INSTDIR\bin\VarnelService.exe"
    !insertmacro SERVICE --remove
    Delete "$INSTDIR\bin\VarnelService.exe"
  ${EndIf}
  ${GetSize} "$INSTDIR" "/S=0K" $0 $1 $2
  WriteRegDWORD HKLM "${UNINSTALL_KEY}" "EstimatedSize" $0

  Call WarnIfNoRuntime
  ${If} $update_restart == 1
    Call StartForUser
  ${EndIf}
SectionEnd

!insertmacro MUI_FUNCTION_DESCRIPTION_BEGIN
  !insertmacro MUI_DESCRIPTION_TEXT ${section_service} "$(ABOUT_SERVICE)"
!insertmacro MUI_FUNCTION_DESCRIPTION_END

; Placed after the sections because it needs their numbers.
Function .onInit
  Call Prepare
  ${GetParameters} $1
  ClearErrors
  ${GetOptions} $1 "/NOSERVICE" $2
  ${IfNot} ${Errors}
    !insertmacro UnselectSection ${section_service}
  ${EndIf}
  ${If} $update_restart == 1
  ${AndIfNot} ${FileExists} "$INSTDIR\bin\VarnelService.exe"
    !insertmacro UnselectSection ${section_service}
  ${EndIf}
FunctionEnd

; A program started by another one may not come to the front by itself.
Function un.ComeToFront
  BringToFront
FunctionEnd

Function un.onInit
  SetRegView 64
  SetShellVarContext all
FunctionEnd

; The setup and the uninstaller's first stage, which started this one, may still be shutting down.
Function un.DeleteEnding
  Pop $R1
  ${For} $R0 1 100
    ClearErrors
    Delete $R1
    ${IfNot} ${Errors}
      ${Break}
    ${EndIf}
    Sleep 50
  ${Next}
FunctionEnd

; Removes the installed files by name, and folders only if nothing else is in them.
Section "Uninstall"
  Call un.WaitUntilClosed
  SetOutPath "$TEMP" ; a process's current folder cannot be removed
  ${If} ${FileExists} "$INSTDIR\bin\VarnelService.exe"
    !insertmacro SERVICE --remove
    Push "$INSTDIR\bin\VarnelService.exe"
    Call un.DeleteEnding
  ${EndIf}
  Delete "$INSTDIR\bin\Varnel.exe"
  Delete "$INSTDIR\bin\check_updates.ps1"
  Delete "$INSTDIR\bin\update_driver.ps1"
  Delete "$INSTDIR\bin\THIRD_PARTY_NOTICES.txt"
  Push "$INSTDIR\bin\VarnelSetup.exe"
  Call un.DeleteEnding
  RMDir "$INSTDIR\bin"
  Delete "$INSTDIR\settings.json"
  Push "$INSTDIR\uninstall.exe"
  Call un.DeleteEnding
  RMDir "$INSTDIR"
  Delete "$SMPROGRAMS\${PRODUCT}.lnk"
  DeleteRegKey HKLM "${UNINSTALL_KEY}"
SectionEnd
