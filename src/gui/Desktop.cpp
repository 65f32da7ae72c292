#include "gui/Desktop.h"

#include <wx/version.h>

#include <iostream>

int runDesktop(int, char**)
{
    // The main window comes with the desktop application; until then say so
    // instead of opening an empty frame.
    std::cout << "##  ERROR  ## : The desktop application is not available in this build yet (wxWidgets "
              << wxMAJOR_VERSION << "." << wxMINOR_VERSION << "); run a batch file with -b <file>."
              << std::endl;
    return 3;
}
