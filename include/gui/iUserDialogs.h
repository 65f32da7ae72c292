#pragma once
// Every question the desktop asks its user, beside the project's boxes. The
// desktop answers with real dialogs; the tests with a recorder, so that no
// modal box ever waits for a hand.

#include "gui/iProjectDialogs.h"

#include <string>
#include <vector>

class iUserDialogs : public iProjectDialogs
{
public:
    // Each answers false when the user cancels.
    virtual bool askNumber(const std::string& title, const std::string& prompt, long value, long min,
                           long max, long& answer) = 0;
    virtual bool askText(const std::string& title, const std::string& prompt, const std::string& value,
                         std::string& answer) = 0;
    virtual bool askChoice(const std::string& title, const std::string& prompt,
                           const std::vector<std::string>& choices, int& answer) = 0;
    // `wildcard` as "*.jnl" or "F2G (*.f2g)|*.f2g".
    virtual bool askOpenFile(const std::string& title, const std::string& wildcard, std::string& path) = 0;
    virtual bool askSaveFile(const std::string& title, const std::string& wildcard, const std::string& name,
                             std::string& path) = 0;
    virtual bool askDirectory(const std::string& title, std::string& path) = 0;
    // Opens a document in the desktop's viewer for it; false when none could.
    virtual bool openDocument(const std::string& path) = 0;
};
