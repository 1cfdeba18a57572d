// SPDX-License-Identifier: MIT
#include "utilities/AttributeDictionary.h"

#include <functional>
#include <map>
#include <string>

struct AttributeDictionary
{
    std::map<std::string, std::string, std::less<>> values;
};

AttributeDictionary* dictionary_get_instance()
{
    return new AttributeDictionary;
}

void dic_set_value(AttributeDictionary* dictionary, const char* key, const char* value)
{
    if (dictionary && key && value)
        dictionary->values.insert_or_assign(key, value);
}

const char* dic_get_value(const AttributeDictionary* dictionary, const char* key)
{
    if (!dictionary || !key)
        return nullptr;
    const auto found = dictionary->values.find(key);
    return found == dictionary->values.end() ? nullptr : found->second.c_str();
}

void dic_for_each(const AttributeDictionary* dictionary, AttributeVisitor visit, void* context)
{
    if (!dictionary || !visit)
        return;
    for (const auto& [key, value] : dictionary->values)
        visit(key.c_str(), value.c_str(), context);
}

void dictionary_release_instance(AttributeDictionary* dictionary)
{
    delete dictionary;
}
