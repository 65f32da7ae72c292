#pragma once

class iSimulator;

// Entry of the desktop application, taken when no batch file is given: it
// starts the toolkit (and so needs a display), opens the main frame on
// `simulator` and runs the event loop. Returns the process exit status.
int runDesktop(iSimulator* simulator, int argc, char** argv, bool noSplash);
