#include "gui/ParameterPanel.h"

#include <wx/checkbox.h>
#include <wx/sizer.h>
#include <wx/statbox.h>
#include <wx/stattext.h>
#include <wx/textctrl.h>

ParameterPanel::ParameterPanel(wxWindow* parent, iParameters* params,
                               const std::vector<const ParameterGroup*>& groups)
    // A size from the start: GTK complains of scrollbars laid out in nothing.
    : wxScrolledWindow(parent, wxID_ANY, wxDefaultPosition, wxSize(600, 400)), _params(params)
{
    auto* sizer = new wxBoxSizer(wxVERTICAL);
    for (const ParameterGroup* group : groups)
        add_group(this, sizer, *group);
    SetSizer(sizer);
    SetScrollRate(0, 12);
    FitInside();
    updateParams();
}

void ParameterPanel::add_group(wxWindow* parent, wxSizer* sizer, const ParameterGroup& group)
{
    _groups.push_back(std::make_unique<ParameterRows>(group));
    ParameterRows* rows = _groups.back().get();
    auto* box = new wxStaticBoxSizer(wxVERTICAL, parent, wxString::FromUTF8(rows->groupName()));
    auto* grid = new wxFlexGridSizer(4, wxSize(10, 3));
    grid->AddGrowableCol(3);
    wxWindow* owner = box->GetStaticBox();
    for (size_t index = 0; index < rows->rows().size(); index++)
    {
        const ParameterRow& row = rows->rows()[index];
        const wxString indent(' ', 4 * std::max(0, row.depth - 1));
        auto* label = new wxStaticText(owner, wxID_ANY, indent + wxString::FromUTF8(row.label));
        if (row.heading)
        {
            // Markup, so that the label is measured in bold.
            wxString text = indent + wxString::FromUTF8(row.label);
            text.Replace("&", "&amp;");
            text.Replace("<", "&lt;");
            text.Replace(">", "&gt;");
            label->SetLabelMarkup("<b>" + text + "</b>");
            grid->Add(label, 0, wxALIGN_CENTER_VERTICAL | wxTOP, 4);
            for (int column = 0; column < 3; column++)
                grid->AddSpacer(0);
            continue;
        }
        wxWindow* control = nullptr;
        if (row.kind == JournalEntry::BOOLEAN)
            control = new wxCheckBox(owner, wxID_ANY, "");
        else
            control = new wxTextCtrl(owner, wxID_ANY, "", wxDefaultPosition, wxSize(110, -1));
        if (!row.name.empty())
            control->SetName(wxString::FromUTF8(row.name));
        auto* range = new wxStaticText(owner, wxID_ANY, wxString::FromUTF8(rows->rangeText(*_params, index)));
        _entries.push_back({rows, index, control, range});
        grid->Add(label, 0, wxALIGN_CENTER_VERTICAL);
        grid->Add(control, 0, wxALIGN_CENTER_VERTICAL);
        grid->Add(new wxStaticText(owner, wxID_ANY, wxString::FromUTF8(row.unit)), 0,
                  wxALIGN_CENTER_VERTICAL);
        grid->Add(range, 0, wxALIGN_CENTER_VERTICAL);
    }
    box->Add(grid, 0, wxEXPAND | wxALL, 4);
    sizer->Add(box, 0, wxEXPAND | wxALL, 6);
}

void ParameterPanel::updateParams()
{
    for (const Entry& entry : _entries)
    {
        const std::string text = entry.rows->valueText(*_params, entry.row);
        if (auto* check = dynamic_cast<wxCheckBox*>(entry.control))
            check->SetValue(text == "1");
        else if (auto* edit = dynamic_cast<wxTextCtrl*>(entry.control))
            edit->ChangeValue(wxString::FromUTF8(text));
        entry.range->SetLabel(wxString::FromUTF8(entry.rows->rangeText(*_params, entry.row)));
    }
}

std::string ParameterPanel::entry_text(const Entry& entry) const
{
    if (auto* check = dynamic_cast<wxCheckBox*>(entry.control))
        return check->GetValue() ? "1" : "0";
    return static_cast<wxTextCtrl*>(entry.control)->GetValue().utf8_string();
}

bool ParameterPanel::commit(std::string& message)
{
    bool good = true;
    for (const Entry& entry : _entries)
    {
        if (!entry.control->IsEnabled())
            continue;
        std::string refused;
        if (!entry.rows->apply(*_params, entry.row, entry_text(entry), refused))
        {
            message += refused + "\n";
            good = false;
        }
    }
    return good;
}

void ParameterPanel::setLocked(bool running, unsigned int age)
{
    for (const Entry& entry : _entries)
        entry.control->Enable(!ParameterRows::locked(entry.rows->rows()[entry.row], running, age));
}

wxWindow* ParameterPanel::findEntry(const std::string& name) const
{
    for (const Entry& entry : _entries)
        if (entry.rows->rows()[entry.row].name == name)
            return entry.control;
    return nullptr;
}
