// SPDX-License-Identifier: MIT
#include "base/Names.h"

#include <memory>
#include <stdexcept>
#include <unicode/normalizer2.h>
#include <unicode/uchar.h>
#include <unicode/unistr.h>
#include <unicode/uspoof.h>

namespace local_platform {

namespace {

void require(UErrorCode status, const char* what)
{
    if (U_FAILURE(status))
        throw std::runtime_error(std::string(what) + ": " + u_errorName(status));
}

icu::UnicodeString normalized(const icu::UnicodeString& text)
{
    UErrorCode status = U_ZERO_ERROR;
    const icu::Normalizer2* form = icu::Normalizer2::getNFCInstance(status);
    require(status, "Unicode normalization");
    icu::UnicodeString result = form->normalize(text, status);
    require(status, "Unicode normalization");
    return result;
}

std::string utf8(const icu::UnicodeString& text)
{
    std::string result;
    return text.toUTF8String(result);
}

/// Checking changes nothing in it, so all threads share it.
const USpoofChecker* checker()
{
    static const auto shared = [] {
        UErrorCode status = U_ZERO_ERROR;
        std::unique_ptr<USpoofChecker, void (*)(USpoofChecker*)> opened(uspoof_open(&status), uspoof_close);
        // Chinese beside Latin letters is common, Cyrillic beside Latin is not.
        uspoof_setRestrictionLevel(opened.get(), USPOOF_MODERATELY_RESTRICTIVE);
        uspoof_setChecks(
            opened.get(), USPOOF_RESTRICTION_LEVEL | USPOOF_INVISIBLE | USPOOF_MIXED_NUMBERS, &status);
        require(status, "Unicode security checks");
        return opened;
    }();
    return shared.get();
}

bool isVisible(UChar32 character)
{
    switch (u_charType(character)) {
    case U_CONTROL_CHAR:
    case U_FORMAT_CHAR:
    case U_SURROGATE:
    case U_UNASSIGNED:
    case U_PRIVATE_USE_CHAR:
    case U_SPACE_SEPARATOR:
    case U_LINE_SEPARATOR:
    case U_PARAGRAPH_SEPARATOR:
        return false;
    default:
        return !u_hasBinaryProperty(character, UCHAR_DEFAULT_IGNORABLE_CODE_POINT);
    }
}

} // namespace

std::string inOneForm(const std::string& name)
{
    return utf8(normalized(icu::UnicodeString::fromUTF8(name)));
}

std::string comparable(const std::string& name)
{
    UErrorCode status = U_ZERO_ERROR;
    // Full-width letters and ligatures are taken for what they stand for, too.
    const icu::Normalizer2* form = icu::Normalizer2::getNFKCCasefoldInstance(status);
    require(status, "Unicode normalization");
    const icu::UnicodeString result = form->normalize(icu::UnicodeString::fromUTF8(name), status);
    require(status, "Unicode normalization");
    return utf8(result);
}

std::string skeletonOf(const std::string& name)
{
    UErrorCode status = U_ZERO_ERROR;
    icu::UnicodeString skeleton;
    uspoof_getSkeletonUnicodeString(
        checker(), 0, normalized(icu::UnicodeString::fromUTF8(name)).foldCase(), skeleton, &status);
    require(status, "Unicode security checks");
    return utf8(skeleton);
}

bool canDeceive(const std::string& name)
{
    const icu::UnicodeString text = icu::UnicodeString::fromUTF8(name);
    for (int32_t i = 0; i < text.length(); i = text.moveIndex32(i, 1))
        if (!isVisible(text.char32At(i)))
            return true;
    UErrorCode status = U_ZERO_ERROR;
    const int32_t faults = uspoof_check2UnicodeString(checker(), text, nullptr, &status);
    require(status, "Unicode security checks");
    return faults != 0;
}

} // namespace local_platform
