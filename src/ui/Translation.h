// SPDX-License-Identifier: MIT
#pragma once

#include "tav_cloud_platform_sdk_export.h"

class QLocale;

/// Puts the module's texts into the language of \a locale, from the catalogues inside the library. At present
/// there is one, for Simplified Chinese; the source language is English.
///
/// What an earlier call installed is removed first, also when there is no catalogue for \a locale: the texts
/// are then English. Dialogs take their texts when they are built, so call this before.
///
/// The buttons of message boxes have their texts from Qt's own catalogue (qtbase_zh_CN), which the host
/// installs.
///
/// The translator belongs to the module and is destroyed with the application object. GUI thread only, with
/// an application object in place; does not block.
///
/// \return whether there is a catalogue for \a locale and it is installed
TAV_CLOUD_PLATFORM_SDK_EXPORT bool installCloudPlatformTranslation(const QLocale& locale);
