#pragma once
// What the project store needs of the user: a message in a titled box and a
// yes or no answer. The desktop shows real boxes; a server or a test answers
// without a display.

#include <string>

class iProjectDialogs
{
public:
    virtual ~iProjectDialogs() = default;
    // `title` is "Error!", "Warning!" or "Information!".
    virtual void showMessage(const std::string& title, const std::string& text) = 0;
    // True for yes.
    virtual bool askYesNo(const std::string& title, const std::string& question) = 0;
};
