#include "gui/MessageWindow.h"

#include <wx/sizer.h>
#include <wx/textctrl.h>

MessageWindow::MessageWindow(wxWindow* parent)
    : wxFrame(parent, wxID_ANY, "Message Window", wxDefaultPosition, wxSize(720, 360),
              wxDEFAULT_FRAME_STYLE | wxFRAME_FLOAT_ON_PARENT)
{
    _text = new wxTextCtrl(this, wxID_ANY, "", wxDefaultPosition, wxDefaultSize,
                           wxTE_MULTILINE | wxTE_READONLY | wxTE_DONTWRAP);
    _text->SetFont(wxFont(wxFontInfo(9).Family(wxFONTFAMILY_TELETYPE)));
    auto* sizer = new wxBoxSizer(wxVERTICAL);
    sizer->Add(_text, 1, wxEXPAND);
    SetSizer(sizer);
    Bind(wxEVT_CLOSE_WINDOW, &MessageWindow::on_close, this);
}

void MessageWindow::trace_message(const char* text, TraceLevel level)
{
    if (text == nullptr)
        return;
    _text->AppendText(wxString::FromUTF8(text));
    if (level <= TRACE_ERROR)
    {
        Show();
        Raise();
    }
}

wxString MessageWindow::getText() const
{
    return _text->GetValue();
}

void MessageWindow::on_close(wxCloseEvent& event)
{
    if (event.CanVeto())
    {
        event.Veto();
        Hide();
        return;
    }
    event.Skip();
}
