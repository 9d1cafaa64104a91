@echo off
rem Opens the viewer on the files given, or on a sample scene, or makes pictures without a window (viewer --help lists the
rem options), with the Tcl/Tk 8.6 that is on the path.
setlocal
set tclsh=
for %%n in (tclsh86.exe tclsh86t.exe tclsh.exe) do if not defined tclsh set "tclsh=%%~$PATH:n"
if not defined tclsh (
    echo viewer: there is no tclsh86.exe on the path: a Tcl/Tk 8.6 for 64-bit Windows is needed 1>&2
    exit /b 1
)
"%tclsh%" "%~dp0app\viewer.tcl" %*
exit /b %ERRORLEVEL%
