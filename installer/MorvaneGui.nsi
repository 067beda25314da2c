; Setup of the control panel (MorvaneGui.exe).
;
; The control panel belongs in the server's installation folder, beside
; Morvane.exe and the settings file Morvane.ini.xml. Setup finds that folder
; from the server's registered service and installs there:
;   - MorvaneGui.exe and its uninstaller MorvaneGui-uninstall.exe,
;   - a Start menu shortcut for every user,
;   - optionally, a logon entry for every user (HKLM Run key),
;   - an entry in the list of installed programs.
; Nothing else in the folder is touched: the server, its settings file and
; their backups, the address space files and the logs stay as they are, at
; install, upgrade and uninstall alike.
;
; A running control panel of the folder is closed first (WM_CLOSE to its tray
; window, which ends it without its Exit question) and started again when
; Setup is done. When the control panel is installed in another folder (the
; server moved), the uninstaller there removes it first: one installation,
; one entry in the list of installed programs.
;
; Built by installer/make-setup.sh; the defines come from the build:
;   ARCH       x86 or amd64
;   VERSION    the product version, four numbers (CMakeLists.txt)
;   PRODUCT    the product's name
;   PUBLISHER  the publisher's name
;   PANEL_EXE  the MorvaneGui.exe to install
;   ICON       the program's icon
;   OUTFILE    the setup program to write
;
; Command line (besides NSIS's own /S and /D=folder):
;   /SERVICE=name  the server's service, when it is not "Morvane"
;   /LOGON=0|1     start the control panel at logon for every user (default 1;
;                  on an upgrade, what the installed version had)

Unicode true
ManifestDPIAware true
RequestExecutionLevel admin
SetCompressor /SOLID lzma
!if "${ARCH}" == "amd64"
  Target amd64-unicode
!else
  Target x86-unicode
!endif

!include "MUI2.nsh"
!include "LogicLib.nsh"
!include "FileFunc.nsh"
!include "Sections.nsh"
!include "WinMessages.nsh"
!include "WordFunc.nsh"

!define APP_NAME      "Varnel OPC Server Control Panel"
!define EXE_NAME      "MorvaneGui.exe"
!define UNINST_NAME   "MorvaneGui-uninstall.exe"
!define SERVER_EXE    "Morvane.exe"
!define DEFAULT_SERVICE "Morvane"
!define TRAY_CLASS    "MorvaneGuiTrayWindow"
!define UNINST_KEY    "Software\Microsoft\Windows\CurrentVersion\Uninstall\MorvaneGui"
!define RUN_KEY       "Software\Microsoft\Windows\CurrentVersion\Run"
!define RUN_VALUE     "MorvaneGui"
!define SHORTCUT      "$SMPROGRAMS\${APP_NAME}.lnk"
; Exit codes of a silent run that did not install.
!define EXIT_NO_FOLDER     3
!define EXIT_PANEL_RUNNING 4
!define EXIT_NOT_ADMIN     5

Name "${APP_NAME}"
OutFile "${OUTFILE}"
BrandingText "${PRODUCT} ${VERSION}"
ShowInstDetails show
ShowUninstDetails show

VIProductVersion "${VERSION}"
VIFileVersion "${VERSION}"
VIAddVersionKey "ProductName" "${PRODUCT}"
VIAddVersionKey "CompanyName" "${PUBLISHER}"
VIAddVersionKey "FileDescription" "${APP_NAME} Setup"
VIAddVersionKey "FileVersion" "${VERSION}"
VIAddVersionKey "ProductVersion" "${VERSION}"
VIAddVersionKey "LegalCopyright" "${PUBLISHER}"

Var ServiceName      ; the server's service
Var ServerFolder     ; the folder of its executable; empty when none is registered
Var PanelWasRunning  ; 1 when Setup closed a running control panel
Var LogonDefault     ; 1 when the logon entry is proposed
Var EarlierFolder    ; the folder of an installed control panel that moves

!define MUI_ICON "${ICON}"
!define MUI_ABORTWARNING
!define MUI_COMPONENTSPAGE_NODESC
!define MUI_COMPONENTSPAGE_TEXT_TOP "The control panel lives in the notification area. It can start by itself at every user's logon:"

!insertmacro MUI_PAGE_WELCOME
!define MUI_PAGE_CUSTOMFUNCTION_SHOW DirectoryShow
!define MUI_PAGE_CUSTOMFUNCTION_LEAVE DirectoryLeave
!define MUI_DIRECTORYPAGE_TEXT_DESTINATION "Server's installation folder"
!define MUI_PAGE_HEADER_TEXT "Server's Installation Folder"
!define MUI_PAGE_HEADER_SUBTEXT "The control panel is installed beside the server, ${SERVER_EXE}."
!insertmacro MUI_PAGE_DIRECTORY
!define MUI_PAGE_HEADER_TEXT "Start at Logon"
!define MUI_PAGE_HEADER_SUBTEXT "Choose whether the control panel starts when a user logs on."
!insertmacro MUI_PAGE_COMPONENTS
!insertmacro MUI_PAGE_INSTFILES
!define MUI_FINISHPAGE_RUN "$INSTDIR\${EXE_NAME}"
!define MUI_FINISHPAGE_RUN_TEXT "Start the control panel now"
!define MUI_PAGE_CUSTOMFUNCTION_SHOW FinishShow
!insertmacro MUI_PAGE_FINISH

!insertmacro MUI_UNPAGE_CONFIRM
!insertmacro MUI_UNPAGE_INSTFILES

!insertmacro MUI_LANGUAGE "English"

!include "PanelProcess.nsh"
!include "ServerFolder.nsh"

; ---------------------------------------------------------------- install

Section "-Control panel" SecPanel
  SectionIn RO
  ; A running control panel holds its file: it is closed first, here and in
  ; the folder of an earlier installation that moves here.
  Call FindEarlierFolder
  Call ClosePanelWindows
  ${If} $EarlierFolder != ""
    StrCpy $R9 $INSTDIR
    StrCpy $INSTDIR $EarlierFolder
    Call ClosePanelWindows
    StrCpy $INSTDIR $R9
  ${EndIf}
  Call ConfirmNoPanelRunning
  ${If} $EarlierFolder != ""
    Call RemoveEarlierInstallation
  ${EndIf}

  SetOutPath "$INSTDIR"
  ${If} ${FileExists} "$INSTDIR\${EXE_NAME}"
    DetailPrint "Replacing the control panel in $INSTDIR"
  ${EndIf}
  File "/oname=${EXE_NAME}" "${PANEL_EXE}"
  WriteUninstaller "$INSTDIR\${UNINST_NAME}"

  SetShellVarContext all
  CreateShortCut "${SHORTCUT}" "$INSTDIR\${EXE_NAME}" "" "$INSTDIR\${EXE_NAME}" 0 \
      SW_SHOWNORMAL "" "${APP_NAME}"

  WriteRegStr HKLM "${UNINST_KEY}" "DisplayName" "${APP_NAME}"
  WriteRegStr HKLM "${UNINST_KEY}" "DisplayVersion" "${VERSION}"
  WriteRegStr HKLM "${UNINST_KEY}" "Publisher" "${PUBLISHER}"
  WriteRegStr HKLM "${UNINST_KEY}" "UninstallString" '"$INSTDIR\${UNINST_NAME}"'
  WriteRegStr HKLM "${UNINST_KEY}" "QuietUninstallString" '"$INSTDIR\${UNINST_NAME}" /S'
  WriteRegStr HKLM "${UNINST_KEY}" "InstallLocation" "$INSTDIR"
  WriteRegStr HKLM "${UNINST_KEY}" "DisplayIcon" '"$INSTDIR\${EXE_NAME}",0'
  WriteRegStr HKLM "${UNINST_KEY}" "ServiceName" "$ServiceName"
  WriteRegDWORD HKLM "${UNINST_KEY}" "NoModify" 1
  WriteRegDWORD HKLM "${UNINST_KEY}" "NoRepair" 1
  ${GetSize} "$INSTDIR" "/M=MorvaneGui*.exe /S=0K /G=0" $0 $1 $2
  WriteRegDWORD HKLM "${UNINST_KEY}" "EstimatedSize" $0
SectionEnd

Section "Start the control panel at logon for every user" SecLogon
  WriteRegStr HKLM "${RUN_KEY}" "${RUN_VALUE}" '"$INSTDIR\${EXE_NAME}"'
SectionEnd

; An upgrade without the logon entry removes the one an older version made.
Section "-Logon entry off"
  ${IfNot} ${SectionIsSelected} ${SecLogon}
    Call RemoveOwnLogonEntry
  ${EndIf}
SectionEnd

Section "-Start again"
  ${If} $PanelWasRunning == 1
    DetailPrint "Starting the control panel again"
    Exec '"$INSTDIR\${EXE_NAME}"'
  ${EndIf}
SectionEnd

Function .onInit
  StrCpy $PanelWasRunning 0
  ; The 64-bit program's entries live in the 64-bit registry view.
  !if "${ARCH}" == "amd64"
    SetRegView 64
  !endif
  Call RequireAdministrator
  Call ReadCommandLine
  Call FindServerFolder
  Call ProposeFolder
  Call ConfirmDowngrade
  Call ChooseLogonDefault
FunctionEnd

Function RequireAdministrator
  UserInfo::GetAccountType
  Pop $0
  ${If} $0 != "Admin"
    MessageBox MB_OK|MB_ICONSTOP "Setup must be run by an administrator." /SD IDOK
    SetErrorLevel ${EXIT_NOT_ADMIN}
    Quit
  ${EndIf}
FunctionEnd

Function ReadCommandLine
  ${GetParameters} $R0
  ClearErrors
  ${GetOptions} $R0 "/SERVICE=" $ServiceName
  ${If} ${Errors}
  ${OrIf} $ServiceName == ""
    StrCpy $ServiceName "${DEFAULT_SERVICE}"
  ${EndIf}
  StrCpy $LogonDefault ""
  ClearErrors
  ${GetOptions} $R0 "/LOGON=" $R1
  ${IfNot} ${Errors}
    ${If} $R1 == "0"
      StrCpy $LogonDefault 0
    ${Else}
      StrCpy $LogonDefault 1
    ${EndIf}
  ${EndIf}
FunctionEnd

; The folder /D= gave wins; else the server's folder; else the folder of an
; installed control panel. A silent run without any of them installs nothing.
Function ProposeFolder
  ${If} $INSTDIR != ""
    Return
  ${EndIf}
  ${If} $ServerFolder != ""
    StrCpy $INSTDIR $ServerFolder
    Return
  ${EndIf}
  ReadRegStr $INSTDIR HKLM "${UNINST_KEY}" "InstallLocation"
  ${If} $INSTDIR == ""
  ${AndIf} ${Silent}
    SetErrorLevel ${EXIT_NO_FOLDER}
    Quit
  ${EndIf}
FunctionEnd

; Installing over a newer version is allowed, but not by mistake.
Function ConfirmDowngrade
  ReadRegStr $0 HKLM "${UNINST_KEY}" "DisplayVersion"
  ${If} $0 == ""
    Return
  ${EndIf}
  ${VersionCompare} $0 "${VERSION}" $1
  ${If} $1 == 1
    MessageBox MB_YESNO|MB_ICONQUESTION "Version $0 of the control panel is installed, which is newer than this setup's version ${VERSION}.$\r$\n$\r$\nReplace it with version ${VERSION}?" /SD IDYES IDYES +2
    Quit
  ${EndIf}
FunctionEnd

; Proposed: what /LOGON= says; on an upgrade, whether the installed version
; had the entry; on a fresh install, yes.
Function ChooseLogonDefault
  ${If} $LogonDefault == ""
    StrCpy $LogonDefault 1
    ReadRegStr $0 HKLM "${UNINST_KEY}" "DisplayVersion"
    ${If} $0 != ""
      ClearErrors
      ReadRegStr $1 HKLM "${RUN_KEY}" "${RUN_VALUE}"
      ${If} ${Errors}
        StrCpy $LogonDefault 0
      ${EndIf}
    ${EndIf}
  ${EndIf}
  ${If} $LogonDefault == 0
    !insertmacro UnselectSection ${SecLogon}
  ${Else}
    !insertmacro SelectSection ${SecLogon}
  ${EndIf}
FunctionEnd

Function DirectoryShow
  ${If} $ServerFolder != ""
    StrCpy $0 "Setup found the server of the service $\"$ServiceName$\" in the folder below. The control panel is installed there, beside ${SERVER_EXE}, its settings file and its logs.$\r$\n$\r$\nChoose another folder only if you know the server is there."
  ${Else}
    StrCpy $0 "The server's service $\"$ServiceName$\" is not installed on this computer, so Setup cannot find the server's installation folder by itself.$\r$\n$\r$\nChoose the folder where ${SERVER_EXE} is installed; the control panel must be installed beside it."
  ${EndIf}
  FindWindow $1 "#32770" "" $HWNDPARENT
  GetDlgItem $1 $1 1006
  SendMessage $1 ${WM_SETTEXT} 0 "STR:$0"
FunctionEnd

Function DirectoryLeave
  ${IfNot} ${FileExists} "$INSTDIR\${SERVER_EXE}"
    MessageBox MB_YESNO|MB_ICONEXCLAMATION "There is no ${SERVER_EXE} in $INSTDIR.$\r$\n$\r$\nWithout the server beside it, the control panel offers only the database explorer. Install it in this folder anyway?" /SD IDYES IDYES +2
    Abort
  ${EndIf}
  Call FindEarlierFolder
  ${If} $EarlierFolder != ""
    MessageBox MB_OKCANCEL|MB_ICONINFORMATION "The control panel is installed in $EarlierFolder.$\r$\n$\r$\nSetup removes it from there and installs it in $INSTDIR." IDOK +2
    Abort
  ${EndIf}
FunctionEnd

; An installed control panel in another folder than the one chosen: its
; uninstaller is still there ("" otherwise).
Function FindEarlierFolder
  ReadRegStr $EarlierFolder HKLM "${UNINST_KEY}" "InstallLocation"
  ${If} $EarlierFolder == $INSTDIR
  ${OrIfNot} ${FileExists} "$EarlierFolder\${UNINST_NAME}"
    StrCpy $EarlierFolder ""
  ${EndIf}
FunctionEnd

; The control panel moves: the earlier installation's own uninstaller removes
; what its setup added there (its running control panel is already closed).
; It runs in place (_?=), so its own file is removed here.
Function RemoveEarlierInstallation
  DetailPrint "Removing the control panel from $EarlierFolder"
  ExecWait '"$EarlierFolder\${UNINST_NAME}" /S _?=$EarlierFolder' $0
  ${If} $0 != 0
    DetailPrint "The uninstaller in $EarlierFolder ended with code $0"
  ${EndIf}
  Delete "$EarlierFolder\${UNINST_NAME}"
FunctionEnd

Function .onVerifyInstDir
  ${If} $INSTDIR == ""
    Abort
  ${EndIf}
FunctionEnd

; Setup just started the control panel again: no second one from the finish
; page.
Function FinishShow
  ${If} $PanelWasRunning == 1
    SendMessage $mui.FinishPage.Run ${BM_SETCHECK} ${BST_UNCHECKED} 0
    ShowWindow $mui.FinishPage.Run ${SW_HIDE}
  ${EndIf}
FunctionEnd

Function RemoveOwnLogonEntry
  ReadRegStr $0 HKLM "${RUN_KEY}" "${RUN_VALUE}"
  ${If} $0 == '"$INSTDIR\${EXE_NAME}"'
    DeleteRegValue HKLM "${RUN_KEY}" "${RUN_VALUE}"
  ${EndIf}
FunctionEnd

; -------------------------------------------------------------- uninstall

Section "Uninstall"
  ReadRegStr $ServiceName HKLM "${UNINST_KEY}" "ServiceName"
  ${If} $ServiceName == ""
    StrCpy $ServiceName "${DEFAULT_SERVICE}"
  ${EndIf}
  Call un.ClosePanelWindows
  Call un.ConfirmNoPanelRunning
  Delete "$INSTDIR\${EXE_NAME}"

  SetShellVarContext all
  Delete "${SHORTCUT}"

  ReadRegStr $0 HKLM "${RUN_KEY}" "${RUN_VALUE}"
  ${If} $0 == '"$INSTDIR\${EXE_NAME}"'
    DeleteRegValue HKLM "${RUN_KEY}" "${RUN_VALUE}"
  ${EndIf}
  ReadRegStr $0 HKLM "${UNINST_KEY}" "InstallLocation"
  ${If} $0 == $INSTDIR
    DeleteRegKey HKLM "${UNINST_KEY}"
  ${EndIf}
  ; Last, so that a caller may wait for this file to go. The folder is the
  ; server's: it stays.
  Delete "$INSTDIR\${UNINST_NAME}"
SectionEnd

Function un.onInit
  StrCpy $PanelWasRunning 0
  ; The 64-bit program's entries live in the 64-bit registry view.
  !if "${ARCH}" == "amd64"
    SetRegView 64
  !endif
  UserInfo::GetAccountType
  Pop $0
  ${If} $0 != "Admin"
    MessageBox MB_OK|MB_ICONSTOP "The control panel must be uninstalled by an administrator." /SD IDOK
    SetErrorLevel ${EXIT_NOT_ADMIN}
    Quit
  ${EndIf}
FunctionEnd
