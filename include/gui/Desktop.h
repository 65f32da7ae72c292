#pragma once

// Entry of the desktop application, taken when no batch file is given.
// Returns the process exit status.
int runDesktop(int argc, char** argv);
