#pragma once
// A slider that changes a view live: each move sets the value and calls the
// view's apply function; any answer other than OK restores the value as it was.

#include "view/Attribute.h"

#include <wx/wx.h>

#include <cmath>

template <typename T, typename View> class SliderInputDialog : public wxDialog
{
public:
    SliderInputDialog(wxWindow* parent, const wxString& title, Attribute<T>& attribute, View* view,
                      void (View::*apply)(), int steps)
        : wxDialog(parent, wxID_ANY, title), _attribute(attribute), _view(view), _apply(apply), _steps(steps)
    {
        _attribute.remember();
        auto* sizer = new wxBoxSizer(wxVERTICAL);
        _label = new wxStaticText(this, wxID_ANY, label());
        _slider = new wxSlider(this, wxID_ANY, position(), 0, _steps, wxDefaultPosition, wxSize(400, -1));
        sizer->Add(_label, 0, wxALL, 8);
        sizer->Add(_slider, 0, wxEXPAND | wxALL, 8);
        sizer->Add(CreateButtonSizer(wxOK | wxCANCEL), 0, wxALL, 8);
        SetSizerAndFit(sizer);
        _slider->Bind(wxEVT_SLIDER, &SliderInputDialog::on_slide, this);
    }

    int ShowModal() override
    {
        const int answer = wxDialog::ShowModal();
        if (answer != wxID_OK)
        {
            _attribute.restore();
            (_view->*_apply)();
        }
        return answer;
    }

private:
    int position() const
    {
        const double span = static_cast<double>(_attribute.max() - _attribute.min());
        return span > 0.
                   ? static_cast<int>(std::lround((_attribute.value() - _attribute.min()) / span * _steps))
                   : 0;
    }
    wxString label() const
    {
        // Section positions count from 1 for the user.
        if constexpr (std::is_integral_v<T>)
            return wxString::Format("%d", static_cast<int>(_attribute.value()) + 1);
        else
            return wxString::Format("%g", static_cast<double>(_attribute.value()));
    }
    void on_slide(wxCommandEvent&)
    {
        const double span = static_cast<double>(_attribute.max() - _attribute.min());
        _attribute.value(static_cast<T>(_attribute.min() + span * _slider->GetValue() / _steps));
        _label->SetLabel(label());
        (_view->*_apply)();
    }

    Attribute<T>& _attribute;
    View* _view;
    void (View::*_apply)();
    int _steps;
    wxStaticText* _label;
    wxSlider* _slider;
};
