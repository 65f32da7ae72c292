#pragma once
// The user of a test: every message box and question is recorded, and
// questions get a set answer.

#include "gui/iProjectDialogs.h"

#include <string>
#include <utility>
#include <vector>

namespace testing_support
{

class RecordingDialogs : public iProjectDialogs
{
public:
    void showMessage(const std::string& title, const std::string& text) override
    {
        boxes.emplace_back(title, text);
    }
    bool askYesNo(const std::string& title, const std::string& question) override
    {
        boxes.emplace_back(title, question);
        return answer;
    }

    // True when a box of that title showed exactly `text`.
    bool saw(const std::string& title, const std::string& text) const
    {
        for (const auto& box : boxes)
            if (box.first == title && box.second == text)
                return true;
        return false;
    }
    std::string all() const
    {
        std::string text;
        for (const auto& box : boxes)
            text += "[" + box.first + "] " + box.second + "\n";
        return text;
    }

    std::vector<std::pair<std::string, std::string>> boxes;
    bool answer = true;
};

} // namespace testing_support
