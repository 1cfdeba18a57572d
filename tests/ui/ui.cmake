# SPDX-License-Identifier: MIT
# The dialogs' tests and pictures. Included from tests/CMakeLists.txt.
target_sources(tav_test_support PRIVATE
    support/CloudSpaceFixture.cpp
    support/DialogFixture.cpp
    support/MessageBoxScript.cpp
    support/Robot.cpp
)
target_include_directories(tav_test_support PRIVATE ${PROJECT_BINARY_DIR}/generated)
target_link_libraries(tav_test_support
    PUBLIC Qt${TAV_QT}::Widgets PRIVATE Qt${TAV_QT}::Network tav_host::core tav_host::toolkit tav_host::utilities)

tav_test(tst_testsupport support/tst_testsupport.cpp)
tav_test(tst_dialogmachinery ui/tst_dialogmachinery.cpp)
tav_test(tst_accountfile ui/account/tst_accountfile.cpp)
tav_test(tst_dlglogin ui/account/tst_dlglogin.cpp)
tav_test(tst_accountdialogs ui/account/tst_accountdialogs.cpp)
tav_test(tst_lifetimes ui/tst_lifetimes.cpp)
foreach(name IN ITEMS clouddialogs cloudspace sharetab)
    tav_test(tst_${name} ui/cloudspace/tst_${name}.cpp)
endforeach()
if(NOT TAV_HOST) # the desktop host is one of the stand-ins'
    tav_test(tst_desktophost ui/tst_desktophost.cpp)
    target_sources(tst_desktophost PRIVATE
        ${PROJECT_SOURCE_DIR}/examples/desktop_host/Backups.cpp
        ${PROJECT_SOURCE_DIR}/examples/desktop_host/MainWindow.cpp)
    target_include_directories(tst_desktophost PRIVATE ${PROJECT_SOURCE_DIR}/examples/desktop_host)
else() # left out, but not forgotten
    set_property(GLOBAL APPEND PROPERTY TAV_TEST_SOURCES ${CMAKE_CURRENT_SOURCE_DIR}/ui/tst_desktophost.cpp)
endif()
if(TAV_WITH_LOCAL_PLATFORM AND NOT TAV_HOST)
    tav_test(tst_desktopjourney ui/tst_desktopjourney.cpp)
    target_sources(tst_desktopjourney PRIVATE
        ${PROJECT_SOURCE_DIR}/examples/desktop_journey/Journey.cpp
        ${PROJECT_SOURCE_DIR}/examples/desktop_host/Backups.cpp
        ${PROJECT_SOURCE_DIR}/examples/desktop_host/MainWindow.cpp)
    target_include_directories(tst_desktopjourney PRIVATE
        ${PROJECT_SOURCE_DIR}/examples/desktop_journey ${PROJECT_SOURCE_DIR}/examples/desktop_host)
    target_link_libraries(tst_desktopjourney PRIVATE platform_under_test)
    set_tests_properties(tst_desktopjourney PROPERTIES TIMEOUT 600) # the drafters are patient
else()
    set_property(GLOBAL APPEND PROPERTY TAV_TEST_SOURCES
        ${CMAKE_CURRENT_SOURCE_DIR}/ui/tst_desktopjourney.cpp)
endif()
tav_test(tst_translation ui/tst_translation.cpp)
target_compile_definitions(tst_translation PRIVATE
    TAV_LUPDATE="$<TARGET_FILE:Qt${TAV_QT}::lupdate>"
    TAV_SOURCE_DIR="${PROJECT_SOURCE_DIR}/src"
    TAV_CATALOGUE="${PROJECT_SOURCE_DIR}/src/translations/tav_cloud_platform_sdk_zh_CN.ts")

# Not a test: renders the dialogs for the eye. See tools/pictures/tav_pictures.cpp.
set(pictures ${PROJECT_SOURCE_DIR}/tools/pictures)
add_executable(tav-pictures
    ${pictures}/Album.cpp
    ${pictures}/CloudSpacePictures.cpp
    ${pictures}/tav_pictures.cpp
)
tav_compile_options(tav-pictures)
target_link_libraries(tav-pictures PRIVATE tav_cloud_platform_internals tav_test_support)
