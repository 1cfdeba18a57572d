// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <utility>
#include <vector>

class AttributeDictionary
{
public:
    const char* value(const char* key) const;

    std::vector<std::pair<std::string, std::string>> entries;
};

AttributeDictionary* dictionary_get_instance();
void dic_set_value(AttributeDictionary* dictionary, const char* key, const char* value);
void dictionary_release_instance(AttributeDictionary* dictionary);
