; The installer. scripts/package --windows calls makensis with VERSION, FOLDER (what the zip holds), LISTS (files.nsh,
; of FOLDER's files), PATH_ENTRY (the program that changes the PATH), ICON and OUTPUT.
;
; Silent: setup.exe /S [/OPENFX=no] [/PATH=yes] [/D=FOLDER], the last without quotes; uninstall.exe /S.
; A version that is there is replaced, and keeps its entry in the PATH.

Unicode true
SetCompressor /SOLID lzma
!include FileFunc.nsh
!include LogicLib.nsh
!include MUI2.nsh
!include Sections.nsh
!include x64.nsh
!include "${LISTS}/files.nsh"

!define KEY "Software\Microsoft\Windows\CurrentVersion\Uninstall\Lumiset"
!define BUNDLE "Lumiset.ofx.bundle"

Name "Lumiset ${VERSION}"
OutFile "${OUTPUT}"
RequestExecutionLevel admin
InstallDir "$PROGRAMFILES64\Lumiset"
ShowInstDetails nevershow
ShowUninstDetails nevershow

VIProductVersion "${VERSION}.0"
VIAddVersionKey CompanyName "Vantrel"
VIAddVersionKey FileDescription "Installer of Lumiset"
VIAddVersionKey FileVersion "${VERSION}"
VIAddVersionKey LegalCopyright "The Lumiset authors"
VIAddVersionKey ProductName "Vantrel Lumiset V"
VIAddVersionKey ProductVersion "${VERSION}"

!define MUI_ABORTWARNING
!insertmacro MUI_PAGE_LICENSE "${FOLDER}/LICENSE.txt"
!insertmacro MUI_PAGE_COMPONENTS
!insertmacro MUI_PAGE_DIRECTORY
!insertmacro MUI_PAGE_INSTFILES
!insertmacro MUI_UNPAGE_CONFIRM
!insertmacro MUI_UNPAGE_INSTFILES
!insertmacro MUI_LANGUAGE English

; Adds the folder of the program to the PATH, or takes it away; the answer of the program is on the stack.
!macro CHANGE_PATH what
  InitPluginsDir
  File "/oname=$PLUGINSDIR\path_entry.exe" "${PATH_ENTRY}"
  ExecWait '"$PLUGINSDIR\path_entry.exe" ${what} "$INSTDIR"' $0
!macroend

Section "Program and plug-ins" SecProgram
  SectionIn RO
  ; What another version has put in its place goes first, so that nothing of it stays.
  ReadRegStr $0 HKLM "${KEY}" "InstallLocation"
  ${If} $0 != ""
  ${AndIf} ${FileExists} "$0\uninstall.exe"
    ExecWait '"$0\uninstall.exe" /S _?=$0' $1
    Delete "$0\uninstall.exe"
    RMDir "$0"
  ${EndIf}

  SetOutPath "$INSTDIR"
  File /r /x "${BUNDLE}" "${FOLDER}/*"
  WriteUninstaller "$INSTDIR\uninstall.exe"
  WriteRegStr HKLM "${KEY}" "DisplayName" "Lumiset ${VERSION}"
  WriteRegStr HKLM "${KEY}" "DisplayVersion" "${VERSION}"
  WriteRegStr HKLM "${KEY}" "DisplayIcon" "$INSTDIR\lumiset.exe"
  WriteRegStr HKLM "${KEY}" "Publisher" "The Lumiset authors"
  WriteRegStr HKLM "${KEY}" "InstallLocation" "$INSTDIR"
  WriteRegStr HKLM "${KEY}" "UninstallString" '"$INSTDIR\uninstall.exe"'
  WriteRegStr HKLM "${KEY}" "QuietUninstallString" '"$INSTDIR\uninstall.exe" /S'
  WriteRegDWORD HKLM "${KEY}" "NoModify" 1
  WriteRegDWORD HKLM "${KEY}" "NoRepair" 1
SectionEnd

Section "OpenFX bundle for editors and compositors" SecOpenFX
  SetOutPath "$COMMONFILES64\OFX\Plugins"
  File /r "${FOLDER}/${BUNDLE}"
  WriteRegDWORD HKLM "${KEY}" "OpenFX" 1
SectionEnd

Section /o "lumiset in the PATH" SecPath
  !insertmacro CHANGE_PATH add
  ${If} $0 == 0
    WriteRegDWORD HKLM "${KEY}" "PathEntry" 1
  ${Else}
    MessageBox MB_OK|MB_ICONEXCLAMATION "The PATH could not be changed. Lumiset is installed without an entry in it." /SD IDOK
    SetErrorLevel 3
  ${EndIf}
SectionEnd

Section "-Size"
  ${GetSize} "$INSTDIR" "/S=0K" $0 $1 $2
  IntFmt $0 "0x%08X" $0
  WriteRegDWORD HKLM "${KEY}" "EstimatedSize" "$0"
SectionEnd

!insertmacro MUI_FUNCTION_DESCRIPTION_BEGIN
  !insertmacro MUI_DESCRIPTION_TEXT ${SecProgram} "lumiset.exe, the module, the frei0r plug-ins and the pages about them."
  !insertmacro MUI_DESCRIPTION_TEXT ${SecOpenFX} "All effects in every host of OpenFX plug-ins: goes to Common Files\OFX\Plugins."
  !insertmacro MUI_DESCRIPTION_TEXT ${SecPath} "The command lumiset in every command prompt, for all users."
!insertmacro MUI_FUNCTION_DESCRIPTION_END

Function .onInit
  ${IfNot} ${RunningX64}
    MessageBox MB_OK|MB_ICONSTOP "Lumiset needs 64-bit Windows." /SD IDOK
    SetErrorLevel 2
    Quit
  ${EndIf}
  SetRegView 64
  ReadRegDWORD $0 HKLM "${KEY}" "PathEntry"  ; of the version that is there
  ${GetParameters} $R0
  ${GetOptions} $R0 "/PATH=" $R1
  ${If} $R1 == "yes"
  ${OrIf} $0 == 1
    !insertmacro SelectSection ${SecPath}
  ${EndIf}
  ${GetOptions} $R0 "/OPENFX=" $R1
  ${If} $R1 == "no"
    !insertmacro UnselectSection ${SecOpenFX}
  ${EndIf}
FunctionEnd

Function un.onInit
  SetRegView 64
FunctionEnd

; Files alone that the installer has put there: the user may have chosen a folder with others in it. What a host has
; loaded goes with the next start of the system.
Section "Uninstall"
  ReadRegDWORD $0 HKLM "${KEY}" "PathEntry"
  ${If} $0 == 1
    !insertmacro CHANGE_PATH remove
  ${EndIf}
  !insertmacro REMOVE_FILES "$INSTDIR"
  ReadRegDWORD $0 HKLM "${KEY}" "OpenFX"
  ${If} $0 == 1
    !insertmacro REMOVE_BUNDLE "$COMMONFILES64\OFX\Plugins"
    RMDir "$COMMONFILES64\OFX\Plugins"
    RMDir "$COMMONFILES64\OFX"
  ${EndIf}
  DeleteRegKey HKLM "${KEY}"
  Delete /REBOOTOK "$INSTDIR\uninstall.exe"
  RMDir "$INSTDIR"
SectionEnd
