#include "gui/WxUserDialogs.h"

#include <wx/choicdlg.h>
#include <wx/dirdlg.h>
#include <wx/filedlg.h>
#include <wx/msgdlg.h>
#include <wx/numdlg.h>
#include <wx/textdlg.h>
#include <wx/utils.h>

void WxUserDialogs::showMessage(const std::string& title, const std::string& text)
{
    const long icon = title == "Error!"     ? wxICON_ERROR
                      : title == "Warning!" ? wxICON_WARNING
                                            : wxICON_INFORMATION;
    wxMessageBox(wxString::FromUTF8(text), wxString::FromUTF8(title), wxOK | icon, _parent);
}

bool WxUserDialogs::askYesNo(const std::string& title, const std::string& question)
{
    return wxMessageBox(wxString::FromUTF8(question), wxString::FromUTF8(title), wxYES_NO | wxICON_QUESTION,
                        _parent) == wxYES;
}

bool WxUserDialogs::askNumber(const std::string& title, const std::string& prompt, long value, long min,
                              long max, long& answer)
{
    const long number = wxGetNumberFromUser(wxString::FromUTF8(prompt), "", wxString::FromUTF8(title), value,
                                            min, max, _parent);
    if (number < 0)
        return false;
    answer = number;
    return true;
}

bool WxUserDialogs::askText(const std::string& title, const std::string& prompt, const std::string& value,
                            std::string& answer)
{
    wxTextEntryDialog dialog(_parent, wxString::FromUTF8(prompt), wxString::FromUTF8(title),
                             wxString::FromUTF8(value));
    if (dialog.ShowModal() != wxID_OK)
        return false;
    answer = dialog.GetValue().utf8_string();
    return true;
}

bool WxUserDialogs::askChoice(const std::string& title, const std::string& prompt,
                              const std::vector<std::string>& choices, int& answer)
{
    wxArrayString texts;
    for (const std::string& choice : choices)
        texts.Add(wxString::FromUTF8(choice));
    const int chosen =
        wxGetSingleChoiceIndex(wxString::FromUTF8(prompt), wxString::FromUTF8(title), texts, 0, _parent);
    if (chosen < 0)
        return false;
    answer = chosen;
    return true;
}

bool WxUserDialogs::askOpenFile(const std::string& title, const std::string& wildcard, std::string& path)
{
    wxFileDialog dialog(_parent, wxString::FromUTF8(title), "", "", wxString::FromUTF8(wildcard),
                        wxFD_OPEN | wxFD_FILE_MUST_EXIST);
    if (dialog.ShowModal() != wxID_OK)
        return false;
    path = dialog.GetPath().utf8_string();
    return true;
}

bool WxUserDialogs::askSaveFile(const std::string& title, const std::string& wildcard,
                                const std::string& name, std::string& path)
{
    wxFileDialog dialog(_parent, wxString::FromUTF8(title), "", wxString::FromUTF8(name),
                        wxString::FromUTF8(wildcard), wxFD_SAVE | wxFD_OVERWRITE_PROMPT);
    if (dialog.ShowModal() != wxID_OK)
        return false;
    path = dialog.GetPath().utf8_string();
    return true;
}

bool WxUserDialogs::askDirectory(const std::string& title, std::string& path)
{
    wxDirDialog dialog(_parent, wxString::FromUTF8(title), "", wxDD_DEFAULT_STYLE);
    if (dialog.ShowModal() != wxID_OK)
        return false;
    path = dialog.GetPath().utf8_string();
    return true;
}

bool WxUserDialogs::openDocument(const std::string& path)
{
    return wxLaunchDefaultApplication(wxString::FromUTF8(path));
}
