// SPDX-License-Identifier: MIT
#include "core/ITreeElement.h"
#include "core/Log.h"
#include "core/Screen.h"
#include "toolkit/FileDialog.h"
#include "toolkit/ISystemSettings.h"
#include "utilities/AttributeDictionary.h"

#include <QtTest>
#include <QtWidgets>

#include <cstdio>
#include <functional>
#include <memory>

namespace {

constexpr auto printScaledArgument = "--print-scaled";

struct Releaser
{
    void operator()(AttributeDictionary* dictionary) const { dictionary_release_instance(dictionary); }
    void operator()(ITreeElement* element) const { tav_tree_element_release_instance(element); }
};
using Dictionary = std::unique_ptr<AttributeDictionary, Releaser>;
using Tree = std::unique_ptr<ITreeElement, Releaser>;

ITreeElement* newElement(const char* name)
{
    return tav_tree_element_create_instance(name, nullptr, "");
}

ITreeElement* newChild(ITreeElement* parent, const char* name)
{
    ITreeElement* child = newElement(name);
    parent->addChild(child);
    return child;
}

QStringList childNames(const ITreeElement* parent)
{
    QStringList names;
    for (const ITreeElement* child = parent->firstChild(); child; child = child->nextSibling())
        names << QString::fromLocal8Bit(child->name());
    return names;
}

QStringList contents(const AttributeDictionary* dictionary)
{
    QStringList pairs;
    const auto note = [](const char* key, const char* value, void* list) {
        *static_cast<QStringList*>(list) << QString::fromLocal8Bit(key) + '=' + QString::fromLocal8Bit(value);
    };
    dic_for_each(dictionary, note, &pairs);
    return pairs;
}

struct TestSettings final : ISystemSettings
{
    QString directory;

    QString lastDirectory() const override { return directory; }
    void setLastDirectory(const QString& now) override { directory = now; }
};

QStringList loggedLines;

void noteLine(const char* text, int level)
{
    loggedLines << QStringLiteral("%1:%2").arg(level).arg(QString::fromLocal8Bit(text));
}

/// Calls \a answer once with the file dialog that opens next.
void withNextFileDialog(QTimer& poll, const std::function<void(QFileDialog&)>& answer)
{
    QObject::connect(&poll, &QTimer::timeout, [&poll, answer] {
        auto* dialog = qobject_cast<QFileDialog*>(QApplication::activeModalWidget());
        if (!dialog)
            return;
        poll.stop();
        answer(*dialog);
        // A dialog that did not take the answer must not keep the test waiting.
        if (dialog->isVisible())
            dialog->reject();
    });
    poll.start(5);
}

} // namespace

class TestHost : public QObject
{
    Q_OBJECT

private slots:
    void dictionaryKeepsTheLastValueOfEachKey()
    {
        const Dictionary dictionary(dictionary_get_instance());
        // The caller's buffers are copied: what happens to them afterwards does not matter.
        QByteArray key("type"), value("0");
        dic_set_value(dictionary.get(), key.constData(), value.constData());
        key.fill('x');
        value.fill('x');
        dic_set_value(dictionary.get(), "fileId", "a longer value that needs an allocation of its own");
        dic_set_value(dictionary.get(), "fileId", "");
        dic_set_value(dictionary.get(), "type", nullptr);
        dic_set_value(dictionary.get(), nullptr, "1");
        QVERIFY(!dic_get_value(dictionary.get(), "Type"));
        QCOMPARE(contents(dictionary.get()), QStringList({"fileId=", "type=0"}));
    }

    void elementCopiesNameAndAttributes()
    {
        Dictionary dictionary(dictionary_get_instance());
        dic_set_value(dictionary.get(), "fileId", "first");
        QByteArray name("Survey.dat");
        const Tree element(tav_tree_element_create_instance(name.constData(), dictionary.get(), ""));
        name.fill('x');
        dictionary.reset();
        QCOMPARE(element->name(), "Survey.dat");
        QCOMPARE(element->properties().value("fileId"), "first");

        const Tree bare(tav_tree_element_create_instance(nullptr, nullptr, nullptr));
        QCOMPARE(bare->name(), "");
        QVERIFY(!bare->properties().value("fileId"));
    }

    void childrenAreFoundInTheirOrder()
    {
        const Tree root(newElement("root"));
        ITreeElement* folder = newChild(root.get(), "folder");
        newChild(folder, "file");
        ITreeElement* twin = newChild(root.get(), "a");
        newChild(root.get(), "a");

        QCOMPARE(childNames(root.get()), QStringList({"folder", "a", "a"}));
        QCOMPARE(root->findChild("a"), twin);
        QVERIFY(!root->findChild("file")); // one level further down
    }

    void addChildRefusesWhatWouldTangleTheTree()
    {
        const Tree root(newElement("root"));
        const Tree loner(newElement("loner"));
        ITreeElement* folder = newChild(root.get(), "folder");
        ITreeElement* file = newChild(folder, "file");
        folder->addChild(nullptr);
        loner->addChild(loner.get());
        loner->addChild(folder); // another tree's
        file->addChild(root.get()); // its own root
        QCOMPARE(childNames(root.get()), QStringList("folder"));
        QCOMPARE(childNames(folder), QStringList("file"));
        QVERIFY(!file->firstChild() && !loner->firstChild());
    }

    void releaseDetachesFromTheParent()
    {
        for (const char* released : {"a", "b", "c"}) {
            const Tree root(newElement("root"));
            QStringList left{"a", "b", "c", "new"};
            left.removeOne(released);
            for (const char* name : {"a", "b", "c"})
                newChild(newChild(root.get(), name), "below");
            tav_tree_element_release_instance(root->findChild(released));
            newChild(root.get(), "new");
            QCOMPARE(childNames(root.get()), left);
        }
    }

    void aDeepTreeIsReleasedWithoutRecursion()
    {
        const Tree root(newElement("root"));
        ITreeElement* parent = root.get();
        for (int i = 0; i < 100'000; ++i)
            parent = newChild(parent, "child");
        QVERIFY(!parent->firstChild());
    }

    void logGoesToTheSink()
    {
        loggedLines.clear();
        setLogSink(noteLine);
        SendLogInfo("100% %s", 3);
        SendLogInfo(nullptr, 1);
        setLogSink(nullptr);
        QCOMPARE(loggedLines, QStringList("3:100% %s"));
    }

    void scalesWhatQtDoesNot_data()
    {
        // The desktop's scale is fixed when an application starts, so each row is a process of its own.
        QTest::addColumn<QStringList>("variables");
        QTest::addColumn<double>("scaled");
        const QString on = "QT_ENABLE_HIGHDPI_SCALING=1";
        QTest::newRow("desktop 2, Qt off") << QStringList("QT_FONT_DPI=192") << 200.0;
        QTest::newRow("desktop 2, Qt on") << QStringList({"QT_FONT_DPI=192", on}) << 100.0;
        QTest::newRow("desktop 1.5, Qt rounds to 1")
            << QStringList({"QT_FONT_DPI=144", on, "QT_SCALE_FACTOR_ROUNDING_POLICY=Floor"}) << 150.0;
    }

    void scalesWhatQtDoesNot()
    {
        QFETCH(QStringList, variables);
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        for (const QString& name : environment.keys())
            if (name.startsWith("QT_") && name != "QT_PLUGIN_PATH")
                environment.remove(name);
        for (const QString& variable : variables + QStringList("QT_QPA_PLATFORM=offscreen"))
            environment.insert(variable.section('=', 0, 0), variable.section('=', 1));
        QProcess process;
        process.setProcessEnvironment(environment);
        process.start(QCoreApplication::applicationFilePath(), {printScaledArgument});
        QVERIFY(process.waitForFinished());
        QTEST(process.readAllStandardOutput().toDouble(), "scaled");
    }

    void fileDialogStartsAndRemembers_data()
    {
        // Relative to a directory with given/, last/ and other/drawing.dwg in it; "" stays empty.
        QTest::addColumn<QStringList>("paths"); // told to start in, answered, started in, remembered
        QTest::addColumn<bool>("forFile");
        QTest::addColumn<bool>("withSettings");
        const QString drawing = "other/drawing.dwg";
        QTest::newRow("file, from given")
            << QStringList({"given", drawing, "given", "other"}) << true << true;
        QTest::newRow("file, from last, cancelled") << QStringList({"", "", "last", "last"}) << true << true;
        QTest::newRow("file, no settings")
            << QStringList({"given", drawing, "given", "last"}) << true << false;
        QTest::newRow("directory, from last") << QStringList({"", "other", "last", "other"}) << false << true;
    }

    void fileDialogStartsAndRemembers()
    {
        QFETCH(QStringList, paths);
        QFETCH(bool, forFile);
        QFETCH(bool, withSettings);
        const QTemporaryDir scratch;
        const QDir base(scratch.path());
        for (QString& path : paths)
            path = path.isEmpty() ? path : base.filePath(path);
        for (const char* name : {"given", "last", "other"})
            QVERIFY(base.mkdir(name));
        QVERIFY(QFile(base.filePath("other/drawing.dwg")).open(QIODevice::WriteOnly));
        TestSettings settings;
        settings.directory = base.filePath("last");

        QString opened;
        QTimer poll;
        withNextFileDialog(poll, [&](QFileDialog& dialog) {
            opened = dialog.directory().absolutePath();
            if (paths[1].isEmpty())
                return dialog.reject();
            dialog.findChild<QLineEdit*>("fileNameEdit")->setText(paths[1]);
            QMetaObject::invokeMethod(&dialog, "accept");
        });
        ISystemSettings* used = withSettings ? &settings : nullptr;
        const QString got = forFile
            ? FileDialog::getOpenFileName(used, nullptr, "Choose", paths[0], "All (*)")
            : FileDialog::getExistingDirectory(used, nullptr, "Choose", paths[0]);
        QCOMPARE(QStringList({got, opened, settings.directory}), paths.mid(1));
    }
};

int main(int argc, char** argv)
{
    if (argc == 2 && argv[1] == QByteArray(printScaledArgument)) {
        const QGuiApplication application(argc, argv);
        return std::printf("%.3f\n", dpi_scaled(100.0)) > 0 ? 0 : 1;
    }
    QCoreApplication::setAttribute(Qt::AA_DontUseNativeDialogs);
    const QApplication application(argc, argv);
    TestHost test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_host.moc"
