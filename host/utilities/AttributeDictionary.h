// SPDX-License-Identifier: MIT
#pragma once

#include "utilities/tav_host_utilities_export.h"

/// A set of texts by key, as the host hands attributes from one library to another.
///
/// All texts are zero-terminated bytes, which the dictionary copies and does not interpret. Null arguments
/// are harmless everywhere. A dictionary may be used by one thread at a time.
struct AttributeDictionary;

/// Receives one attribute of a dictionary; both texts are valid during the call only.
using AttributeVisitor = void (*)(const char* key, const char* value, void* context);

/// A new, empty dictionary. The caller owns it: see dictionary_release_instance().
TAV_HOST_UTILITIES_EXPORT AttributeDictionary* dictionary_get_instance();

/// Sets \a key to \a value, replacing what it had. Does nothing when an argument is null.
TAV_HOST_UTILITIES_EXPORT void dic_set_value(
    AttributeDictionary* dictionary, const char* key, const char* value);

/// The value of \a key, or null when it has none. Valid until that key is set again or the dictionary is
/// released.
TAV_HOST_UTILITIES_EXPORT const char* dic_get_value(const AttributeDictionary* dictionary, const char* key);

/// Calls \a visit with \a context for every attribute, in the byte order of the keys. \a visit must not
/// change the dictionary.
TAV_HOST_UTILITIES_EXPORT void dic_for_each(
    const AttributeDictionary* dictionary, AttributeVisitor visit, void* context);

/// Releases \a dictionary. What was created from its contents stays as it is.
TAV_HOST_UTILITIES_EXPORT void dictionary_release_instance(AttributeDictionary* dictionary);
