#pragma once
// One generic panel for parameter groups: for each value of each group its
// label, an entry, its unit and its range, drawn from the groups' own lists.

#include "gui/ParameterRows.h"

#include <wx/scrolwin.h>

#include <memory>
#include <string>
#include <vector>

class iParameters;
class ParameterGroup;
class wxStaticText;
class wxWindow;

class ParameterPanel : public wxScrolledWindow
{
public:
    ParameterPanel(wxWindow* parent, iParameters* params, const std::vector<const ParameterGroup*>& groups);

    // Registry to entries.
    void updateParams();
    // Entries to registry; false with every refused entry named in `message`.
    bool commit(std::string& message);
    void setLocked(bool running, unsigned int age);

    // The entry of a registry parameter, for tests; null when not on this panel.
    wxWindow* findEntry(const std::string& name) const;

private:
    struct Entry
    {
        ParameterRows* rows;
        size_t row;
        wxWindow* control;
        // The bounds differ between systems: shown again with the values.
        wxStaticText* range;
    };
    void add_group(wxWindow* parent, wxSizer* sizer, const ParameterGroup& group);
    std::string entry_text(const Entry& entry) const;

    iParameters* _params;
    std::vector<std::unique_ptr<ParameterRows>> _groups;
    std::vector<Entry> _entries;
};
