; SPDX-License-Identifier: MIT
; The installer for Windows. scripts/package.sh gives, with -D:
;   VERSION, FOUR_PARTS   3.0.41 and 3.0.0.41
;   TREE, FILES           the folder of what is installed, and the lists of its files (scripts/packaging/nsis_files.py)
;   OUTPUT                the installer
;   TARGET                x86-unicode, which runs everywhere and installs both word sizes; amd64-unicode is for tests, on a
;                         Windows that runs no 32-bit programs
; Exit codes: 0 done, 1 cancelled, 2 rights are missing or a file cannot be written, 3 a DLL could not be registered, 5 a program
; uses them.
Unicode true
Target ${TARGET}
!include LogicLib.nsh
!include FileFunc.nsh
!include x64.nsh
!include "${FILES}"

Name "pixkit ${VERSION}"
OutFile "${OUTPUT}"
; Never asks for more rights: who wants /ALLUSERS starts it with them.
RequestExecutionLevel user
ManifestDPIAware true
XPStyle on
; Files get the time at which they are installed, so that the installer has the same bytes whenever it is made.
SetDateSave off
; A file that cannot be written ends the installation, also a silent one, which would go on without it otherwise.
AllowSkipFiles off
SetCompressor /SOLID lzma
ShowInstDetails nevershow
ShowUninstDetails nevershow
BrandingText " "
LicenseData "${TREE}\LICENSE.txt"
VIProductVersion ${FOUR_PARTS}
VIFileVersion ${FOUR_PARTS}
VIAddVersionKey ProductName "pixkit"
VIAddVersionKey ProductVersion "${VERSION}"
VIAddVersionKey FileVersion "${VERSION}"
VIAddVersionKey FileDescription "pixkit imaging component, set-up"
VIAddVersionKey LegalCopyright "the pixkit authors, MIT licence"

Page license
Page directory
Page instfiles
UninstPage uninstConfirm
UninstPage instfiles

!define UNINSTALL_KEY "Software\Microsoft\Windows\CurrentVersion\Uninstall\pixkit"
!define SHORTCUT "$SMPROGRAMS\pixkit reference.lnk"

Var ForAll      ; 1: for all users
Var Register32  ; the programs that register DLLs; empty where this Windows does not run such programs
Var Register64
Var Scope       ; their options

; All or nothing: a program that runs, or a DLL that one has loaded, can be neither replaced nor deleted.
!macro RefuseIfUsed file
    ${If} ${FileExists} "$INSTDIR\${file}"
        ClearErrors
        FileOpen $0 "$INSTDIR\${file}" a
        ${If} ${Errors}
            MessageBox MB_OK|MB_ICONEXCLAMATION "A program uses pixkit. Please end it, and try again." /SD IDOK
            SetErrorLevel 5
            Quit
        ${EndIf}
        FileClose $0
    ${EndIf}
!macroend

!macro RefuseIfAnyUsed
    !insertmacro RefuseIfUsed x86\pixkit.dll
    !insertmacro RefuseIfUsed x86\pixkit.exe
    !insertmacro RefuseIfUsed x64\pixkit.dll
    !insertmacro RefuseIfUsed x64\pixkit.exe
!macroend

!macro Common un
Function ${un}FindPrograms
!if "${TARGET}" == "x86-unicode"
    StrCpy $Register32 "$SYSDIR\regsvr32.exe" ; which is SysWOW64 to this program
    ${If} ${IsNativeAMD64}
        StrCpy $Register64 "$WINDIR\Sysnative\regsvr32.exe"
        SetRegView 64
    ${EndIf}
!else
    StrCpy $Register64 "$SYSDIR\regsvr32.exe"
    ${If} ${FileExists} "$WINDIR\SysWOW64\regsvr32.exe"
        StrCpy $Register32 "$WINDIR\SysWOW64\regsvr32.exe"
    ${EndIf}
    SetRegView 64
!endif
FunctionEnd

Function ${un}UseScope
    ${If} $ForAll = 1
        SetShellVarContext all
        StrCpy $Scope ""
    ${Else}
        SetShellVarContext current
        StrCpy $Scope "/n /i:user"
    ${EndIf}
FunctionEnd

Function ${un}Forget
    ${If} $Register32 != ""
        ExecWait '"$Register32" /s /u $Scope "$INSTDIR\x86\pixkit.dll"' $1
    ${EndIf}
    ${If} $Register64 != ""
        ExecWait '"$Register64" /s /u $Scope "$INSTDIR\x64\pixkit.dll"' $1
    ${EndIf}
FunctionEnd

Function ${un}RemoveFiles
    !insertmacro RemoveListedFiles
    Delete "$INSTDIR\uninstall.exe"
    ReadRegStr $1 SHCTX "${UNINSTALL_KEY}" InstallLocation
    ${If} $1 == $INSTDIR
        DeleteRegKey SHCTX "${UNINSTALL_KEY}"
        Delete "${SHORTCUT}"
    ${EndIf}
    SetOutPath "$TEMP"
    RMDir "$INSTDIR" ; stays where somebody put something into it
FunctionEnd
!macroend
!insertmacro Common ""
!insertmacro Common "un."

Function .onInit
    Call FindPrograms
    ${GetParameters} $0
    ClearErrors
    ${GetOptions} $0 "/ALLUSERS" $1
    ${IfNot} ${Errors}
        StrCpy $ForAll 1
        UserInfo::GetAccountType
        Pop $0
        ${If} $0 != "Admin"
            MessageBox MB_OK|MB_ICONSTOP "/ALLUSERS needs administrator rights." /SD IDOK
            SetErrorLevel 2
            Quit
        ${EndIf}
    ${EndIf}
    Call UseScope
    ${If} $INSTDIR == "" ; else /D was given
        ReadRegStr $INSTDIR SHCTX "${UNINSTALL_KEY}" InstallLocation
    ${EndIf}
    ${If} $INSTDIR == ""
        ${If} $ForAll = 0
            StrCpy $INSTDIR "$LOCALAPPDATA\Programs\pixkit"
        ${ElseIf} $Register64 != ""
            StrCpy $INSTDIR "$PROGRAMFILES64\pixkit"
        ${Else}
            StrCpy $INSTDIR "$PROGRAMFILES\pixkit"
        ${EndIf}
    ${EndIf}
FunctionEnd

Function RegistrationFailed
    Call Forget
    Call RemoveFiles
    MessageBox MB_OK|MB_ICONSTOP "pixkit could not be registered (regsvr32 gave $0)." /SD IDOK
    SetErrorLevel 3
    Quit
FunctionEnd

; What an earlier version has installed goes first, wherever that is: this one may have other files.
Function RemoveEarlier
    ReadRegStr $1 SHCTX "${UNINSTALL_KEY}" InstallLocation
    ${If} $1 != ""
    ${AndIf} ${FileExists} "$1\uninstall.exe"
        ExecWait '"$1\uninstall.exe" /S _?=$1' $0 ; which waits, and cannot delete itself
        ${If} $0 <> 0
            SetErrorLevel $0
            Quit
        ${EndIf}
        Delete "$1\uninstall.exe"
        RMDir "$1"
    ${EndIf}
FunctionEnd

Section
    !insertmacro RefuseIfAnyUsed
    Call RemoveEarlier
    !insertmacro InstallListedFiles
    WriteUninstaller "$INSTDIR\uninstall.exe"
    ${If} $Register32 != ""
        ExecWait '"$Register32" /s $Scope "$INSTDIR\x86\pixkit.dll"' $0
        ${If} $0 <> 0
            Call RegistrationFailed
        ${EndIf}
    ${EndIf}
    ${If} $Register64 != ""
        ExecWait '"$Register64" /s $Scope "$INSTDIR\x64\pixkit.dll"' $0
        ${If} $0 <> 0
            Call RegistrationFailed
        ${EndIf}
    ${EndIf}
    SetOutPath "$INSTDIR"
    CreateShortcut "${SHORTCUT}" "$INSTDIR\reference\index.html"
    WriteRegStr SHCTX "${UNINSTALL_KEY}" DisplayName "pixkit"
    WriteRegStr SHCTX "${UNINSTALL_KEY}" DisplayVersion "${VERSION}"
    WriteRegStr SHCTX "${UNINSTALL_KEY}" Publisher "the pixkit authors"
    WriteRegStr SHCTX "${UNINSTALL_KEY}" InstallLocation "$INSTDIR"
    WriteRegStr SHCTX "${UNINSTALL_KEY}" UninstallString '"$INSTDIR\uninstall.exe"'
    WriteRegStr SHCTX "${UNINSTALL_KEY}" QuietUninstallString '"$INSTDIR\uninstall.exe" /S'
    WriteRegDWORD SHCTX "${UNINSTALL_KEY}" EstimatedSize ${SIZE_IN_KIB}
    WriteRegDWORD SHCTX "${UNINSTALL_KEY}" NoModify 1
    WriteRegDWORD SHCTX "${UNINSTALL_KEY}" NoRepair 1
SectionEnd

; For whom this folder was installed, the entry tells that names it.
Function un.onInit
    Call un.FindPrograms
    ReadRegStr $0 HKLM "${UNINSTALL_KEY}" InstallLocation
    ${If} $0 == $INSTDIR
        StrCpy $ForAll 1
        UserInfo::GetAccountType
        Pop $0
        ${If} $0 != "Admin"
            MessageBox MB_OK|MB_ICONSTOP "pixkit is installed for all users: removing it needs administrator rights." /SD IDOK
            SetErrorLevel 2
            Quit
        ${EndIf}
    ${EndIf}
    Call un.UseScope
FunctionEnd

Section Uninstall
    !insertmacro RefuseIfAnyUsed
    Call un.Forget ; the DLLs leave the entries of another copy alone
    Call un.RemoveFiles
SectionEnd
