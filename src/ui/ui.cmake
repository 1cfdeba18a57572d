# SPDX-License-Identifier: MIT
# The dialogs, their icons and their translations. Included from src/CMakeLists.txt, not a directory of its own: a
# generated file belongs to the targets of its directory only.
set(ui_public_headers
    ui/CloudTransferWindow.h
    ui/Translation.h
    ui/account/DlgLoginCloundPlatform.h
    ui/account/DlgLogoutCloundPlatform.h
    ui/account/DlgResetPassword.h
    ui/cloudspace/DlgMyCloudSpace.h
)
list(APPEND public_headers ${ui_public_headers})

target_sources(tav_cloud_platform_internals PRIVATE
    Resources/tav_cloud_platform_sdk_icons.qrc
    ui/BlockingCall.cpp
    ui/CloudTransferWindow.cpp
    ui/ElidedLabel.cpp
    ui/FieldGrid.cpp
    ui/MessageBoxes.cpp
    ui/Steps.cpp
    ui/TransferDialog.cpp
    ui/Translation.cpp
    ui/WindowNote.cpp
    ui/account/AccountFile.cpp
    ui/account/DlgLoginCloundPlatform.cpp
    ui/account/DlgLogoutCloundPlatform.cpp
    ui/account/DlgRegisterR2V.cpp
    ui/account/DlgResetPassword.cpp
    ui/account/PhoneLoginWidget.cpp
    ui/account/RememberedAccounts.cpp
    ui/account/UserNameLoginWidget.cpp
    ui/account/VerificationCode.cpp
    ui/cloudspace/AddAltAccountDlg.cpp
    ui/cloudspace/AddressBookManageDlg.cpp
    ui/cloudspace/CellCheckBox.cpp
    ui/cloudspace/ChoiceCloudProjectDlg.cpp
    ui/cloudspace/CloudShareTabWidget.cpp
    ui/cloudspace/CloudSpaceTabWidget.cpp
    ui/cloudspace/CreateCloudProjectDlg.cpp
    ui/cloudspace/CreateGroupDlg.cpp
    ui/cloudspace/DlgMyCloudSpace.cpp
    ui/cloudspace/GroupManageDlg.cpp
    ui/cloudspace/ItemWidget.cpp
    ui/cloudspace/JoinGroupDlg.cpp
    ui/cloudspace/MycheckBox.cpp
    ui/cloudspace/RecordTable.cpp
    ui/cloudspace/TavFileButton.cpp
    ui/cloudspace/TileArea.cpp
    ${ui_public_headers}
)

# The catalogue: kept by the target update_translations, compiled into the library.
set(catalogue ${CMAKE_CURRENT_SOURCE_DIR}/translations/tav_cloud_platform_sdk_zh_CN.ts)
qt_add_translation(compiled_catalogue ${catalogue})
configure_file(translations/tav_cloud_platform_sdk_translations.qrc.in
    ${CMAKE_CURRENT_BINARY_DIR}/tav_cloud_platform_sdk_translations.qrc @ONLY)
qt_add_resources(translation_resource ${CMAKE_CURRENT_BINARY_DIR}/tav_cloud_platform_sdk_translations.qrc)
target_sources(tav_cloud_platform_internals PRIVATE ${translation_resource})

add_custom_target(update_translations
    COMMAND Qt${TAV_QT}::lupdate -locations none -source-language en -target-language zh_CN
        ${CMAKE_CURRENT_SOURCE_DIR} -ts ${catalogue}
    COMMENT "Bringing the catalogue up to date with the texts in the sources"
    VERBATIM)
