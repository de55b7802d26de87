@echo off
rem Runs all tests of this archive, or the suites that are named: verify.cmd [suite]...
"%~dp0bin\verify.exe" %*
set result=%errorlevel%
rem Without a pause, a window that a double click has opened would close.
if "%~1"=="" pause
exit /b %result%
