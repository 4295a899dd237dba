; The Windows installer of tkQuarv, made by packaging/windows/deploy.py:
;   makensis -DVERSION=... -DOUTFILE=... -DLISTS=... -DICON=... -DSIZE_KB=... tkquarv.nsi
; LISTS holds install-files.nsh and uninstall-files.nsh, the files of the
; deployed folder: the uninstaller removes exactly those, then the folders
; they leave empty, never anything the user made (the Documents folder
; holds the user's profiles, layouts and exports and is not touched).

Unicode true
Target amd64-unicode
SetCompressor /SOLID lzma
RequestExecutionLevel admin

!define PRODUCT "tkQuarv"
!define UNINSTALL_KEY "Software\Microsoft\Windows\CurrentVersion\Uninstall\tkQuarv"

Name "${PRODUCT}"
OutFile "${OUTFILE}"
InstallDir "$PROGRAMFILES64\${PRODUCT}"
InstallDirRegKey HKLM "Software\${PRODUCT}" "InstallDir"
BrandingText "${PRODUCT} ${VERSION}"

VIProductVersion "${VERSION}.0"
VIAddVersionKey /LANG=0 "ProductName" "${PRODUCT}"
VIAddVersionKey /LANG=0 "ProductVersion" "${VERSION}"
VIAddVersionKey /LANG=0 "FileVersion" "${VERSION}"
VIAddVersionKey /LANG=0 "FileDescription" "${PRODUCT} - instalare"
VIAddVersionKey /LANG=0 "LegalCopyright" "${PRODUCT}"

!include "MUI2.nsh"
!define MUI_ICON "${ICON}"
!define MUI_UNICON "${ICON}"
!define MUI_ABORTWARNING

!insertmacro MUI_PAGE_WELCOME
!insertmacro MUI_PAGE_DIRECTORY
!insertmacro MUI_PAGE_INSTFILES
!insertmacro MUI_PAGE_FINISH
!insertmacro MUI_UNPAGE_CONFIRM
!insertmacro MUI_UNPAGE_INSTFILES
!insertmacro MUI_LANGUAGE "Romanian"

Function .onInit
  SetShellVarContext all
  SetRegView 64
FunctionEnd

Section "tkQuarv"
  ; Over an earlier installation: its own uninstaller removes its files
  ; first, so nothing of the old version stays behind.
  ReadRegStr $0 HKLM "${UNINSTALL_KEY}" "InstallLocation"
  StrCmp $0 "" fresh
  IfFileExists "$0\uninstall.exe" 0 fresh
  ExecWait '"$0\uninstall.exe" /S _?=$0'
  Delete "$0\uninstall.exe"
  RMDir "$0"
fresh:
  !include "${LISTS}/install-files.nsh"
  WriteUninstaller "$INSTDIR\uninstall.exe"

  CreateShortcut "$SMPROGRAMS\${PRODUCT}.lnk" "$INSTDIR\tkQuarv.exe" "" "$INSTDIR\tkQuarv.exe" 0
  CreateShortcut "$DESKTOP\${PRODUCT}.lnk" "$INSTDIR\tkQuarv.exe" "" "$INSTDIR\tkQuarv.exe" 0

  WriteRegStr HKLM "Software\${PRODUCT}" "InstallDir" "$INSTDIR"
  WriteRegStr HKLM "${UNINSTALL_KEY}" "DisplayName" "${PRODUCT}"
  WriteRegStr HKLM "${UNINSTALL_KEY}" "DisplayVersion" "${VERSION}"
  WriteRegStr HKLM "${UNINSTALL_KEY}" "Publisher" "${PRODUCT}"
  WriteRegStr HKLM "${UNINSTALL_KEY}" "DisplayIcon" "$INSTDIR\tkQuarv.exe,0"
  WriteRegStr HKLM "${UNINSTALL_KEY}" "InstallLocation" "$INSTDIR"
  WriteRegStr HKLM "${UNINSTALL_KEY}" "UninstallString" '"$INSTDIR\uninstall.exe"'
  WriteRegStr HKLM "${UNINSTALL_KEY}" "QuietUninstallString" '"$INSTDIR\uninstall.exe" /S'
  WriteRegDWORD HKLM "${UNINSTALL_KEY}" "NoModify" 1
  WriteRegDWORD HKLM "${UNINSTALL_KEY}" "NoRepair" 1
  WriteRegDWORD HKLM "${UNINSTALL_KEY}" "EstimatedSize" ${SIZE_KB}
SectionEnd

; The folder must be new, empty or an earlier installation's: the
; uninstaller removes the files it installed, and a shared folder may hold
; another program's files of the same names.
Function .onVerifyInstDir
  IfFileExists "$INSTDIR\uninstall.exe" verified
  FindFirst $0 $1 "$INSTDIR\*"
entry:
  StrCmp $1 "" empty
  StrCmp $1 "." next
  StrCmp $1 ".." next
  FindClose $0
  Abort
next:
  FindNext $0 $1
  Goto entry
empty:
  FindClose $0
verified:
FunctionEnd

Function un.onInit
  SetShellVarContext all
  SetRegView 64
FunctionEnd

Section "Uninstall"
  !include "${LISTS}/uninstall-files.nsh"
  Delete "$INSTDIR\uninstall.exe"
  RMDir "$INSTDIR"
  Delete "$SMPROGRAMS\${PRODUCT}.lnk"
  Delete "$DESKTOP\${PRODUCT}.lnk"
  DeleteRegKey HKLM "${UNINSTALL_KEY}"
  DeleteRegKey HKLM "Software\${PRODUCT}"
SectionEnd
