@echo off
rem SPDX-License-Identifier: MIT
rem Makes the programs of the current user forget what install-user.cmd told them. The files stay: delete the folder when no
rem program uses it any longer.
rem
rem   uninstall-user.cmd [/s]   /s: does not wait for a key at the end
rem
rem What another copy of pixkit has registered stays.
rem Exit code: 0 done, also where nothing was registered; 1 one of the DLLs could not be; 2 files are missing.
setlocal DisableDelayedExpansion
set "here=%~dp0"
set result=0
if exist "%here%x86\pixkit.dll" if exist "%here%x64\pixkit.dll" goto found
echo x86\pixkit.dll or x64\pixkit.dll is not beside this file: they are what removes their entries.
set result=2
goto end

:found
set "system32=%SystemRoot%\System32"
if not exist "%SystemRoot%\SysWOW64\regsvr32.exe" goto only32
if exist "%SystemRoot%\Sysnative\regsvr32.exe" set "system32=%SystemRoot%\Sysnative"
call :forget "%SystemRoot%\SysWOW64\regsvr32.exe" x86 32-bit
call :forget "%system32%\regsvr32.exe" x64 64-bit
goto end

:only32
if /i "%PROCESSOR_ARCHITECTURE%"=="x86" call :forget "%system32%\regsvr32.exe" x86 32-bit
if /i not "%PROCESSOR_ARCHITECTURE%"=="x86" call :forget "%system32%\regsvr32.exe" x64 64-bit
goto end

:forget
"%~1" /s /u /n /i:user "%here%%~2\pixkit.dll"
if not %errorlevel%==0 goto refused
echo This copy of pixkit is forgotten for %~3 programs.
goto :eof
:refused
echo pixkit could not be removed for %~3 programs (regsvr32 gave %errorlevel%).
set result=1
goto :eof

:end
if /i not "%~1"=="/s" pause
exit /b %result%
