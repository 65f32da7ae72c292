#include "kernel/common/FaciesRegister.h"

FaciesRegister::FaciesRegister()
{
    add(FaciesDescription());
}

bool FaciesRegister::add(const FaciesDescription& description)
{
    if (_by_id.size() >= MAX_FACIES)
        return false;
    if (_by_name.count(description.short_name()) != 0 || _by_id.count(description.id()) != 0)
        return false;
    _by_name.emplace(description.short_name(), description);
    _by_id.emplace(description.id(), description);
    if (description.id() < MAX_FACIES)
        _default_class[description.id()] = description.granulo_class();
    return true;
}

bool FaciesRegister::is_registered(const std::string& name, unsigned char& id) const
{
    auto found = _by_name.find(name);
    if (found == _by_name.end())
        return false;
    id = found->second.id();
    return true;
}

bool FaciesRegister::is_registered(unsigned char id, std::string& name) const
{
    auto found = _by_id.find(static_cast<unsigned char>(id & 0x0F));
    if (found == _by_id.end())
        return false;
    name = found->second.short_name();
    return true;
}

FaciesDescription FaciesRegister::at(const std::string& name) const
{
    auto found = _by_name.find(name);
    return found == _by_name.end() ? FaciesDescription() : found->second;
}

FaciesDescription FaciesRegister::at(unsigned char id) const
{
    auto found = _by_id.find(id);
    return found == _by_id.end() ? FaciesDescription() : found->second;
}

unsigned char FaciesRegister::default_granulo_class(unsigned char id) const
{
    return id < MAX_FACIES ? _default_class[id] : 0;
}

std::string FaciesRegister::details() const
{
    std::string text;
    for (const auto& entry : _by_id)
        text += "  - " + entry.second.short_name() + " : " + entry.second.long_name() + "\n";
    return text;
}
