#pragma once
// The user's questions as wx dialogs on top of the main frame.

#include "gui/iUserDialogs.h"

class wxWindow;

class WxUserDialogs : public iUserDialogs
{
public:
    explicit WxUserDialogs(wxWindow* parent) : _parent(parent) {}

    void showMessage(const std::string& title, const std::string& text) override;
    bool askYesNo(const std::string& title, const std::string& question) override;
    bool askNumber(const std::string& title, const std::string& prompt, long value, long min, long max,
                   long& answer) override;
    bool askText(const std::string& title, const std::string& prompt, const std::string& value,
                 std::string& answer) override;
    bool askChoice(const std::string& title, const std::string& prompt,
                   const std::vector<std::string>& choices, int& answer) override;
    bool askOpenFile(const std::string& title, const std::string& wildcard, std::string& path) override;
    bool askSaveFile(const std::string& title, const std::string& wildcard, const std::string& name,
                     std::string& path) override;
    bool askDirectory(const std::string& title, std::string& path) override;
    bool openDocument(const std::string& path) override;

private:
    wxWindow* _parent;
};
