@echo off
rem Runs the test programs on a Windows machine and writes what they say into report.txt, to be sent
rem back. Unpack pictavo-VERSION-win64-tests.zip (scripts/package.sh --tests) and start this file in it:
rem   run.cmd
rem The exit code says how many programs failed. Takes some minutes, no rights and no network. With the
rem optional feature Graphics Tools, Direct3D's debug layer looks on too.
rem Wine takes its own OpenCL.dll before any other: there, set WINEDLLOVERRIDES=opencl=n for the fake runtimes,
rem with which OpenCL itself has no device.
setlocal
cd /d "%~dp0"
set failed=0
set GTEST_BRIEF=1
set report=%CD%\report.txt

echo Pictavo's tests> "%report%"
ver>> "%report%"
echo %PROCESSOR_IDENTIFIER%, %NUMBER_OF_PROCESSORS% processors>> "%report%"
call :run "the library and its modules" bin\pictavo-host.exe info
call :run "kernels" bin\kernel_tests.exe
call :run "the DLL" host_tests\dll_tests.exe
call :run "slots" host_tests\slots_tests.exe
call :run "the frame with fake modules" host_tests\frame_tests.exe
call :run "OpenCL on fake runtimes" host_tests\opencl_fake_tests.exe
for %%H in (bin\abi_host_*.exe) do call :run "a host of the other ABI" %%H

rem Skips itself where there is no device.
call :run "OpenCL" host_tests\opencl_tests.exe

if exist "%SystemRoot%\System32\d3d11sdklayers.dll" (
  set PICTAVO_D3D11_DEBUG=1
) else (
  echo == Direct3D's debug layer is not installed>> "%report%"
)
for %%D in (software card) do (
  set PICTAVO_D3D11_DEVICE=%%D
  call :run "shaders and Direct3D on the %%D device" bin\d3d11_tests.exe
)

echo Programs that failed: %failed%.>> "%report%"
echo Programs that failed: %failed%. Please send back %report%
exit /b %failed%

rem A digit before >> would name a handle.
:run
echo %~1
echo.>> "%report%"
echo == %~1>> "%report%"
%2 %3 >> "%report%" 2>&1
set code=%ERRORLEVEL%
if not "%code%"=="0" set /a failed=%failed%+1
echo exit code %code%.>> "%report%"
exit /b 0
