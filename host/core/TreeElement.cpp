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
            static_cast<PropertySet*>(context)->m_values.emplace(key, value);
        };
        dic_for_each(attributes, copy, this);
    }

    const char* value(const char* key) const override
    {
        if (!key)
            return nullptr;
        const auto found = m_values.find(key);
        return found == m_values.end() ? nullptr : found->second.c_str();
    }

private:
    std::map<std::string, std::string, std::less<>> m_values;
};

/// The children hang on their parent as a doubly linked list, so that adding and leaving take constant time.
class TreeElement final : public ITreeElement
{
public:
    TreeElement(const char* name, const AttributeDictionary* attributes)
        : m_name(name ? name : "")
        , m_properties(attributes)
    {
    }

    const char* name() const override { return m_name.c_str(); }
    ITreeElement* firstChild() const override { return m_firstChild; }
    ITreeElement* nextSibling() const override { return m_next; }
    const IPropertySet& properties() const override { return m_properties; }
    ITreeElement* findChild(const char* name) const override;
    void addChild(ITreeElement* child) override;

    void leaveParent();
    static void destroy(TreeElement* top);

private:
    bool hasAncestorOrIs(const TreeElement* other) const;

    std::string m_name;
    PropertySet m_properties;
    TreeElement* m_parent = nullptr;
    TreeElement* m_firstChild = nullptr;
    TreeElement* m_lastChild = nullptr;
    TreeElement* m_previous = nullptr;
    TreeElement* m_next = nullptr;
};

ITreeElement* TreeElement::findChild(const char* name) const
{
    if (!name)
        return nullptr;
    TreeElement* child = m_firstChild;
    while (child && child->m_name != name)
        child = child->m_next;
    return child;
}

void TreeElement::addChild(ITreeElement* element)
{
    // Null, or of a class that is not ours, where the links could not be kept.
    auto* child = dynamic_cast<TreeElement*>(element);
    if (!child || child->m_parent || hasAncestorOrIs(child))
        return;
    child->m_parent = this;
    child->m_previous = m_lastChild;
    (m_lastChild ? m_lastChild->m_next : m_firstChild) = child;
    m_lastChild = child;
}

bool TreeElement::hasAncestorOrIs(const TreeElement* other) const
{
    // Without children it is nobody's ancestor: this is what keeps growing a deep tree leaf by leaf linear.
    if (!other->m_firstChild)
        return other == this;
    const TreeElement* element = this;
    while (element && element != other)
        element = element->m_parent;
    return element;
}

void TreeElement::leaveParent()
{
    if (!m_parent)
        return;
    (m_previous ? m_previous->m_next : m_parent->m_firstChild) = m_next;
    (m_next ? m_next->m_previous : m_parent->m_lastChild) = m_previous;
    m_parent = m_previous = m_next = nullptr;
}

/// Destroys a tree whose \a top has no parent. Children go before their parent, and a parent whose children
/// are on their way no longer names them, so the walk needs neither recursion nor a stack.
void TreeElement::destroy(TreeElement* top)
{
    TreeElement* element = top;
    while (element) {
        if (TreeElement* child = std::exchange(element->m_firstChild, nullptr)) {
            element = child;
            continue;
        }
        TreeElement* next = element->m_next ? element->m_next : element->m_parent;
        delete element;
        element = next;
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
