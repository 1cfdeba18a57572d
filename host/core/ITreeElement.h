// SPDX-License-Identifier: MIT
#pragma once

#include "core/tav_host_core_export.h"

struct AttributeDictionary;

/// The named texts of a tree element, fixed when it was created.
class TAV_HOST_CORE_EXPORT IPropertySet
{
public:
    /// The value of \a key, or null when the element has none or \a key is null. Lives as long as the
    /// element.
    virtual const char* value(const char* key) const = 0;

protected:
    ~IPropertySet() = default;
};

/// One element of the host's file tree.
///
/// Made by tav_tree_element_create_instance() only. Whoever creates an element owns it until a parent takes
/// it; a parent owns its children. Texts are zero-terminated in the local 8-bit encoding. A tree may be used
/// by one thread at a time.
class TAV_HOST_CORE_EXPORT ITreeElement
{
public:
    /// The name given at creation. Lives as long as the element.
    virtual const char* name() const = 0;

    /// The first child, or null. Borrowed: it belongs to this element.
    virtual ITreeElement* firstChild() const = 0;

    /// The next child of this element's parent, or null. Borrowed likewise.
    virtual ITreeElement* nextSibling() const = 0;

    /// The first child, not deeper descendant, named \a name, or null; null also when \a name is null.
    virtual ITreeElement* findChild(const char* name) const = 0;

    /// The attributes copied at creation.
    virtual const IPropertySet& properties() const = 0;

    /// Takes ownership of \a child and makes it the last child.
    ///
    /// Refused without effect, so that the caller still owns what it owned: null, this element itself, an
    /// element that already has a parent, and an ancestor of this element. Takes constant time for a \a child
    /// without children of its own; else it walks from here up to the root, looking for \a child.
    virtual void addChild(ITreeElement* child) = 0;

protected:
    /// Elements are released, not deleted: see tav_tree_element_release_instance().
    ~ITreeElement() = default;
};

/// A new element without parent or children, owned by the caller.
/// \param name its name; null counts as empty
/// \param attributes copied as they are now, later changes do not reach the element; null counts as empty
/// \param extra free for the caller; not stored
TAV_HOST_CORE_EXPORT ITreeElement* tav_tree_element_create_instance(
    const char* name, const AttributeDictionary* attributes, const char* extra);

/// Releases \a element and everything below it, however deep or wide; one that has a parent leaves it first.
/// Null is harmless.
TAV_HOST_CORE_EXPORT void tav_tree_element_release_instance(ITreeElement* element);
