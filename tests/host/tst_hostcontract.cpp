// SPDX-License-Identifier: MIT
// What the module requires of a host's libraries. It uses only what docs/integration.md names, and so runs
// against the libraries of every host.
#include "core/ITreeElement.h"
#include "core/Log.h"
#include "core/Screen.h"
#include "toolkit/Dialog.h"
#include "toolkit/FileDialog.h"
#include "toolkit/ISystemSettings.h"
#include "utilities/AttributeDictionary.h"

#include <QtTest>
#include <QtWidgets>

#include <memory>
#include <thread>

class TestHostContract : public QObject
{
    Q_OBJECT

private slots:
    void treeKeepsOrderAndAttributes()
    {
        AttributeDictionary* attributes = dictionary_get_instance();
        dic_set_value(attributes, "type", "0");
        dic_set_value(attributes, "type", "1");
        dic_set_value(attributes, "projectId", "42");
        const std::unique_ptr<ITreeElement, decltype(&tav_tree_element_release_instance)> root(
            tav_tree_element_create_instance("root", attributes, ""), tav_tree_element_release_instance);
        for (const char* name : {"b", "twin", "twin", "a"}) {
            dic_set_value(attributes, "projectId", name);
            root->addChild(tav_tree_element_create_instance(name, attributes, ""));
        }
        root->firstChild()->addChild(tav_tree_element_create_instance("deeper", attributes, ""));
        dictionary_release_instance(attributes);

        QByteArrayList children;
        for (const ITreeElement* child = root->firstChild(); child; child = child->nextSibling())
            children << QByteArray(child->name()) + ':' + child->properties().value("projectId");
        QCOMPARE(children, QByteArrayList({"b:b", "twin:twin", "twin:twin", "a:a"}));
        QCOMPARE(root->properties().value("type"), "1");
        QCOMPARE(root->properties().value("projectId"), "42");
        QVERIFY(!root->properties().value("fileId") && !root->nextSibling());
        QCOMPARE(root->findChild("twin"), root->firstChild()->nextSibling()); // the first of them
        QVERIFY(!root->findChild("deeper"));
    }

    void fileDialogSurvivesItsParent()
    {
        for (const bool isFolder : {false, true}) {
            QPointer<QWidget> parent(new QWidget);
            QTimer::singleShot(0, parent.data(), [&parent] { delete parent; });
            const QString answer = isFolder
                ? FileDialog::getExistingDirectory(pSystemSettings, parent, "Choose", QString(), {})
                : FileDialog::getOpenFileName(
                    pSystemSettings, parent, "Choose", QString(), "All (*)", nullptr, {});
            QVERIFY(!parent);
            QCOMPARE(answer, QString());
        }
    }

    void dialogBelongsToItsParent()
    {
        auto parent = std::make_unique<QWidget>();
        const QPointer<QDialog> dialog(new Dialog(parent.get()));
        QVERIFY(dialog->isWindow());
        parent.reset();
        QVERIFY(!dialog);
    }

    void scalesLengthsLinearly()
    {
        QVERIFY(dpi_scaled(100.0) > 0.0);
        QCOMPARE(dpi_scaled(300.0), 3.0 * dpi_scaled(100.0));
    }

    void logsFromAnyThread() { std::thread(SendLogInfo, "a line of a test", 0).join(); }
};

int main(int argc, char** argv)
{
    QCoreApplication::setAttribute(Qt::AA_DontUseNativeDialogs);
    const QApplication application(argc, argv);
    TestHostContract test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_hostcontract.moc"
