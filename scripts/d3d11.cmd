@echo off
rem Runs the Direct3D tests on Windows' software device and on the graphics card, both with the debug
rem layer of the optional feature Graphics Tools.
rem   scripts\d3d11.cmd PATH\d3d11_tests.exe
setlocal
for %%D in (software card) do (
  set PICTAVO_D3D11_DEVICE=%%D
  echo On the %%D device:
  "%~1" || exit /b 1
)
