; The server's installation folder, from its registered service: the folder
; of the executable in HKLM\SYSTEM\CurrentControlSet\Services\<name> ImagePath.
;
; The image path is a command line: a quoted path with arguments after it
; ("C:\Program Files\Varnel\Morvane.exe" -service), an unquoted one
; (C:\Varnel\Morvane.exe, where spaces are taken as part of the path up to
; ".exe"), possibly with environment variables (REG_EXPAND_SZ) or the \??\
; prefix of native paths.

!define SERVICES_KEY "SYSTEM\CurrentControlSet\Services"

; $0: an image path -> $0: the executable's path ("" when there is none).
Function ExecutableOfImagePath
  ExpandEnvStrings $0 $0
  StrCpy $1 $0 4
  ${If} $1 == "\??\"
    StrCpy $0 $0 "" 4
  ${EndIf}
  StrCpy $1 $0 1
  ${If} $1 == '"'
    ; Up to the closing quote.
    StrCpy $0 $0 "" 1
    StrCpy $2 0
    ${Do}
      StrCpy $1 $0 1 $2
      ${IfThen} $1 == "" ${|} ${ExitDo} ${|}
      ${IfThen} $1 == '"' ${|} ${ExitDo} ${|}
      IntOp $2 $2 + 1
    ${Loop}
    StrCpy $0 $0 $2
    Return
  ${EndIf}
  ; Up to the first ".exe" (StrCmp ignores case), or the whole text.
  StrLen $3 $0
  StrCpy $2 0
  ${Do}
    ${IfThen} $2 >= $3 ${|} ${ExitDo} ${|}
    StrCpy $1 $0 4 $2
    ${If} $1 == ".exe"
      IntOp $2 $2 + 4
      StrCpy $0 $0 $2
      ${ExitDo}
    ${EndIf}
    IntOp $2 $2 + 1
  ${Loop}
FunctionEnd

; $ServiceName -> $ServerFolder ("" when the service is not registered or its
; folder does not exist).
Function FindServerFolder
  StrCpy $ServerFolder ""
  ReadRegStr $0 HKLM "${SERVICES_KEY}\$ServiceName" "ImagePath"
  ${If} $0 == ""
    Return
  ${EndIf}
  Call ExecutableOfImagePath
  ${If} $0 == ""
    Return
  ${EndIf}
  ${GetParent} $0 $1
  ${If} ${FileExists} "$1\*.*"
    StrCpy $ServerFolder $1
  ${EndIf}
FunctionEnd
