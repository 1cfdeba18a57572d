// SPDX-License-Identifier: MIT
#include "Fuzz.h"

#include "account/CloudAccountLogin.h"
#include "cloud/CloudFileManger.h"
#include "core/ITreeElement.h"

/// Exactly the files belong to a project, and they have no children.
static void walk(const ITreeElement* parent)
{
    for (const ITreeElement* node = parent->firstChild(); node; node = node->nextSibling()) {
        const bool isFile = node->properties().value("projectId");
        require(isFile == (*node->properties().value("type") == '1') && !(isFile && node->firstChild()));
        walk(node);
    }
}

/// Each line of the input is the body of a reply; every operation begins with the first.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const QByteArrayList bodies = bytesOf(data, size).split('\n');
    CloudFileManger client("", "", "", "Host", {"Other"}, ".dgn", "Title", "1");
    const auto cloud = [&] { return replies = bodies, &client; };
    // Nobody is signed in, whatever came before.
    static const auto* const signedOut = new CloudAccountLogin(*CloudAccountLogin::instance());
    *CloudAccountLogin::instance() = *signedOut;
    const auto session = [&] { return replies = bodies, CloudAccountLogin::instance(); };
    QList<CloudFileManger::CloudAddressBookInfo> friends;
    QList<CloudFileManger::CloudGroupInfo> groups;
    QVector<CloudFileManger::CloudGroupMemberInfo> members;
    QMap<QString, QString> files;
    QString code;
    int id = 0;
    cloud()->SearchAddressBookList(friends);
    cloud()->SearchGroup(groups);
    cloud()->SearchGroupMember("1", members);
    cloud()->getShareProjectInfoById2("Host", "1", files);
    cloud()->CloudShareAnonymous("1", code, 1);
    cloud()->UploadCloudShareFile2("", "", "", id);
    cloud()->AddCloudProInfo("", "");
    session()->mobileVerify("1");
    session()->registerUser("", "", "", "");
    session()->userLoginAccount("", "");
    session()->phoneLoginAccount("", "");
    session()->logout();
    ITreeElement* tree = cloud()->getFileTree();
    walk(tree);
    tav_tree_element_release_instance(tree);
    return 0;
}
