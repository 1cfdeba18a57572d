// SPDX-License-Identifier: MIT
#pragma once

#include "utilities/AttributeDictionary.h"

#include <memory>
#include <string>
#include <vector>

class ITreeElement
{
public:
    const char* name() const { return text.c_str(); }
    ITreeElement* firstChild() const { return children.empty() ? nullptr : children.front().get(); }
    ITreeElement* nextSibling() const;
    const AttributeDictionary& properties() const { return attributes; }
    ITreeElement* findChild(const char* name) const;
    void addChild(ITreeElement* child);

private:
    friend ITreeElement* tav_tree_element_create_instance(
        const char*, const AttributeDictionary*, const char*);
    friend void tav_tree_element_release_instance(ITreeElement* element);

    std::string text;
    AttributeDictionary attributes;
    ITreeElement* parent = nullptr;
    std::vector<std::unique_ptr<ITreeElement>> children;
};

ITreeElement* tav_tree_element_create_instance(
    const char* name, const AttributeDictionary* attributes, const char* extra);
void tav_tree_element_release_instance(ITreeElement* element);
