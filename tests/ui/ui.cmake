# SPDX-License-Identifier: MIT
# The dialogs' tests and pictures. Included from tests/CMakeLists.txt.
target_sources(tav_test_support PRIVATE support/MessageBoxScript.cpp)
target_link_libraries(tav_test_support PUBLIC Qt5::Widgets)

tav_test(tst_messageboxscript support/tst_messageboxscript.cpp)
tav_test(tst_accountfile ui/account/tst_accountfile.cpp)
tav_test(tst_dlglogin ui/account/tst_dlglogin.cpp ui/account/DialogFixture.cpp)
tav_test(tst_accountdialogs ui/account/tst_accountdialogs.cpp ui/account/DialogFixture.cpp)
tav_test(tst_translation ui/tst_translation.cpp)
target_compile_definitions(tst_translation PRIVATE
    TAV_LUPDATE="$<TARGET_FILE:Qt5::lupdate>"
    TAV_SOURCE_DIR="${PROJECT_SOURCE_DIR}/src"
    TAV_CATALOGUE="${PROJECT_SOURCE_DIR}/src/translations/tav_cloud_platform_sdk_zh_CN.ts")

# Not a test: renders the dialogs for the eye. See pictures/tav_pictures.cpp.
add_executable(tav-pictures pictures/tav_pictures.cpp)
tav_compile_options(tav-pictures)
target_link_libraries(tav-pictures PRIVATE tav_cloud_platform_internals tav_test_support)
