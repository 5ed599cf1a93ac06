@echo off
rem SPDX-License-Identifier: MIT
rem Makes pixkit known to the programs of the current user, for each word size that this Windows runs. No rights are needed.
rem The files are used where they lie: move the folder first, and run this again after moving it.
rem
rem   install-user.cmd [/s]     /s: does not wait for a key at the end
rem
rem Exit code: 0 done, 1 one of the DLLs could not be registered, 2 files are missing.
setlocal DisableDelayedExpansion
set "here=%~dp0"
set result=0
if exist "%here%x86\pixkit.dll" if exist "%here%x64\pixkit.dll" goto found
echo x86\pixkit.dll or x64\pixkit.dll is not beside this file. Unpack the whole archive first.
set result=2
goto end

:found
rem 32-bit programs are served by what the 32-bit regsvr32 registers, and the other ones by the system's own. A 32-bit shell
rem sees the latter as Sysnative.
set "system32=%SystemRoot%\System32"
if not exist "%SystemRoot%\SysWOW64\regsvr32.exe" goto only32
if exist "%SystemRoot%\Sysnative\regsvr32.exe" set "system32=%SystemRoot%\Sysnative"
call :register "%SystemRoot%\SysWOW64\regsvr32.exe" x86 32-bit
call :register "%system32%\regsvr32.exe" x64 64-bit
goto end

:only32
rem A Windows of one word size.
if /i "%PROCESSOR_ARCHITECTURE%"=="x86" call :register "%system32%\regsvr32.exe" x86 32-bit
if /i not "%PROCESSOR_ARCHITECTURE%"=="x86" call :register "%system32%\regsvr32.exe" x64 64-bit
goto end

:register
"%~1" /s /n /i:user "%here%%~2\pixkit.dll"
if not %errorlevel%==0 goto refused
echo pixkit is ready for %~3 programs.
goto :eof
:refused
echo pixkit could not be registered for %~3 programs (regsvr32 gave %errorlevel%).
set result=1
goto :eof

:end
if %result%==0 echo Scripts get one by CreateObject "pixkit.cPixSheet". uninstall-user.cmd undoes this.
if /i not "%~1"=="/s" pause
exit /b %result%
