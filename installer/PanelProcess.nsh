; Closing a running control panel before its file is replaced or removed.
;
; The control panel's hidden tray window (class MorvaneGuiTrayWindow) ends the
; program on WM_CLOSE the same way as its Exit command, without the Exit
; question: the tray icon goes, the windows it opened close, the last log line
; is written. ClosePanelWindows closes only a window whose process runs
; $INSTDIR\MorvaneGui.exe; copies in other folders are left alone. It sets
; $PanelWasRunning to 1 when it closed one (the caller clears it first).
;
; The control panel also holds the mutex "<service name>Mutex" while it runs.
; When that mutex is still there after the windows are closed
; (ConfirmNoPanelRunning, with $ServiceName), a control panel runs where Setup
; cannot reach it (another user's session): the administrator is asked to end
; it; a silent run fails.

!define SYNCHRONIZE 0x00100000
!define PROCESS_QUERY_LIMITED_INFORMATION 0x1000
!define PANEL_EXIT_WAIT_MS 20000

!macro DEFINE_CLOSE_PANEL UN
Function ${UN}ClosePanelWindows
  StrCpy $0 0
next_window:
  FindWindow $0 "${TRAY_CLASS}" "" 0 $0
  ${If} $0 == 0
    Goto windows_done
  ${EndIf}
  System::Call 'user32::GetWindowThreadProcessId(p r0, *i .r1) i'
  System::Call 'kernel32::OpenProcess(i ${SYNCHRONIZE}|${PROCESS_QUERY_LIMITED_INFORMATION}, i 0, i r1) p .r2'
  ${If} $2 == 0
    Goto next_window
  ${EndIf}
  StrCpy $3 ""
  System::Call 'kernel32::QueryFullProcessImageNameW(p r2, i 0, w .r3, *i ${NSIS_MAX_STRLEN}) i'
  ${If} $3 != "$INSTDIR\${EXE_NAME}"
    System::Call 'kernel32::CloseHandle(p r2)'
    Goto next_window
  ${EndIf}

  ${If} $PanelWasRunning == 0
    !if "${UN}" == ""
      MessageBox MB_OKCANCEL|MB_ICONINFORMATION "The control panel is running. Setup closes it now and starts it again when it is done.$\r$\n$\r$\nChanges not yet saved in its windows are lost." /SD IDOK IDOK close_window
    !else
      MessageBox MB_OKCANCEL|MB_ICONINFORMATION "The control panel is running. It is closed now.$\r$\n$\r$\nChanges not yet saved in its windows are lost." /SD IDOK IDOK close_window
    !endif
    System::Call 'kernel32::CloseHandle(p r2)'
    SetErrorLevel ${EXIT_PANEL_RUNNING}
    Abort "The control panel is still running."
  ${EndIf}
close_window:
  DetailPrint "Closing the running control panel (process $1)"
  SendMessage $0 ${WM_CLOSE} 0 0 /TIMEOUT=5000
wait_for_exit:
  System::Call 'kernel32::WaitForSingleObject(p r2, i ${PANEL_EXIT_WAIT_MS}) i .r4'
  ${If} $4 != 0
    MessageBox MB_RETRYCANCEL|MB_ICONEXCLAMATION "The control panel did not end. End it with Exit from its tray menu, then choose Retry." /SD IDCANCEL IDRETRY wait_for_exit
    System::Call 'kernel32::CloseHandle(p r2)'
    SetErrorLevel ${EXIT_PANEL_RUNNING}
    Abort "The control panel is still running."
  ${EndIf}
  System::Call 'kernel32::CloseHandle(p r2)'
  StrCpy $PanelWasRunning 1
  StrCpy $0 0
  Goto next_window
windows_done:
FunctionEnd

Function ${UN}ConfirmNoPanelRunning
  StrCpy $5 "$ServiceName"
check_mutex:
  ; A control panel that has just ended may hold the mutex for a moment
  ; longer than its process handle shows: look again for up to 5 s.
  StrCpy $7 0
look_again:
  System::Call 'kernel32::OpenMutexW(i ${SYNCHRONIZE}, i 0, w "$5Mutex") p .r6'
  ${If} $6 != 0
    System::Call 'kernel32::CloseHandle(p r6)'
    ${If} $7 < 50
      IntOp $7 $7 + 1
      Sleep 100
      Goto look_again
    ${EndIf}
    MessageBox MB_RETRYCANCEL|MB_ICONEXCLAMATION "The control panel is still running, perhaps in another user's session. End it there with Exit from its tray menu, then choose Retry." /SD IDCANCEL IDRETRY check_mutex
    SetErrorLevel ${EXIT_PANEL_RUNNING}
    Abort "The control panel is still running."
  ${EndIf}
FunctionEnd
!macroend

!insertmacro DEFINE_CLOSE_PANEL ""
!insertmacro DEFINE_CLOSE_PANEL "un."
