// SPDX-License-Identifier: MIT
#include "core/ITreeElement.h"

#include "utilities/AttributeDictionary.h"

#include <functional>
#include <map>
#include <string>
#include <utility>

namespace {

class PropertySet final : public IPropertySet
{
public:
    explicit PropertySet(const AttributeDictionary* attributes)
    {
        const auto copy = [](const char* key, const char* value, void* context) {
            static_cast<PropertySet*>(context)->values.emplace(key, value);
        };
        dic_for_each(attributes, copy, this);
    }

    const char* value(const char* key) const override
    {
        if (!key)
            return nullptr;
        const auto found = values.find(key);
        return found == values.end() ? nullptr : found->second.c_str();
    }

private:
    std::map<std::string, std::string, std::less<>> values;
};

/// The children of an element form a doubly linked list, so that adding and removing one take constant time.
class TreeElement final : public ITreeElement
{
public:
    TreeElement(const char* name, const AttributeDictionary* attributes)
        : ownName(name ? name : "")
        , propertySet(attributes)
    {
    }

    const char* name() const override { return ownName.c_str(); }
    ITreeElement* firstChild() const override { return first; }
    ITreeElement* nextSibling() const override { return next; }
    const IPropertySet& properties() const override { return propertySet; }
    ITreeElement* findChild(const char* name) const override;
    void addChild(ITreeElement* element) override;

    void leaveParent();
    static void destroy(TreeElement* top);

private:
    bool hasAncestorOrIs(const TreeElement* other) const;

    std::string ownName;
    PropertySet propertySet;
    TreeElement* parent = nullptr;
    TreeElement* first = nullptr;
    TreeElement* last = nullptr;
    TreeElement* previous = nullptr;
    TreeElement* next = nullptr;
};

ITreeElement* TreeElement::findChild(const char* name) const
{
    if (!name)
        return nullptr;
    TreeElement* child = first;
    while (child && child->ownName != name)
        child = child->next;
    return child;
}

void TreeElement::addChild(ITreeElement* element)
{
    // Null, or of a class that is not ours, where the links could not be kept.
    auto* child = dynamic_cast<TreeElement*>(element);
    if (!child || child->parent || hasAncestorOrIs(child))
        return;
    child->parent = this;
    child->previous = last;
    (last ? last->next : first) = child;
    last = child;
}

bool TreeElement::hasAncestorOrIs(const TreeElement* other) const
{
    // An element without children has no descendants: with this, building a deep tree leaf by leaf is linear.
    if (!other->first)
        return other == this;
    const TreeElement* element = this;
    while (element && element != other)
        element = element->parent;
    return element;
}

void TreeElement::leaveParent()
{
    if (!parent)
        return;
    (previous ? previous->next : parent->first) = next;
    (next ? next->previous : parent->last) = previous;
    parent = previous = next = nullptr;
}

/// Destroys a tree whose \a top has no parent. An element drops the link to its children before they are
/// destroyed and is itself destroyed after them, so the walk needs neither recursion nor a stack.
void TreeElement::destroy(TreeElement* top)
{
    TreeElement* element = top;
    while (element) {
        if (TreeElement* child = std::exchange(element->first, nullptr)) {
            element = child;
            continue;
        }
        TreeElement* following = element->next ? element->next : element->parent;
        delete element;
        element = following;
    }
}

} // namespace

ITreeElement* tav_tree_element_create_instance(
    const char* name, const AttributeDictionary* attributes, const char* /*extra*/)
{
    return new TreeElement(name, attributes);
}

void tav_tree_element_release_instance(ITreeElement* element)
{
    auto* top = dynamic_cast<TreeElement*>(element);
    if (!top)
        return;
    top->leaveParent();
    TreeElement::destroy(top);
}
