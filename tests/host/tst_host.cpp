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
constexpr auto withoutApplicationArgument = "--without-application";

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
        dic_set_value(nullptr, "type", "1");

        QCOMPARE(dic_get_value(dictionary.get(), "type"), "0");
        QVERIFY(!dic_get_value(dictionary.get(), "Type"));
        QVERIFY(!dic_get_value(dictionary.get(), nullptr));
        QVERIFY(!dic_get_value(nullptr, "type"));
        QCOMPARE(contents(dictionary.get()), QStringList({"fileId=", "type=0"}));
        QCOMPARE(contents(nullptr), QStringList());
        dictionary_release_instance(nullptr);
    }

    void elementCopiesNameAndAttributes()
    {
        Dictionary dictionary(dictionary_get_instance());
        dic_set_value(dictionary.get(), "fileId", "first");
        QByteArray name("Survey.dat");
        const Tree element(tav_tree_element_create_instance(name.constData(), dictionary.get(), ""));
        name.fill('x');
        dic_set_value(dictionary.get(), "fileId", "second");
        dictionary.reset();
        QCOMPARE(element->name(), "Survey.dat");
        QCOMPARE(element->properties().value("fileId"), "first");
        QVERIFY(!element->properties().value(nullptr));

        const Tree bare(tav_tree_element_create_instance(nullptr, nullptr, nullptr));
        QCOMPARE(bare->name(), "");
        QVERIFY(!bare->properties().value("fileId"));
        tav_tree_element_release_instance(nullptr);
    }

    void childrenAreFoundInTheirOrder()
    {
        const Tree root(newElement("root"));
        ITreeElement* folder = newChild(root.get(), "folder");
        newChild(folder, "file");
        ITreeElement* twin = newChild(root.get(), "a");
        newChild(root.get(), "a");

        QCOMPARE(childNames(root.get()), QStringList({"folder", "a", "a"}));
        QVERIFY(!root->nextSibling());
        QCOMPARE(root->findChild("a"), twin);
        QVERIFY(!root->findChild("file")); // one level further down
        QVERIFY(!root->findChild("A"));
        QVERIFY(!root->findChild(nullptr));
    }

    void addChildRefuses_data()
    {
        // The tree is root / folder / file, with leaf as root's second child and loner as an element by
        // itself.
        QTest::addColumn<QByteArray>("parent");
        QTest::addColumn<QByteArray>("child");
        const auto row = [](const char* name, const QByteArray& parent, const QByteArray& child) {
            QTest::newRow(name) << parent << child;
        };
        row("null", "folder", "null");
        row("itself", "loner", "loner");
        row("its parent's other child", "folder", "leaf");
        row("its own child again", "folder", "file");
        row("another tree's child", "loner", "folder");
        row("its parent", "folder", "root");
        row("a root further up", "file", "root");
    }

    void addChildRefuses()
    {
        QFETCH(QByteArray, parent);
        QFETCH(QByteArray, child);
        const Tree root(newElement("root"));
        const Tree loner(newElement("loner"));
        ITreeElement* folder = newChild(root.get(), "folder");
        ITreeElement* leaf = newChild(root.get(), "leaf");
        ITreeElement* file = newChild(folder, "file");
        const QMap<QByteArray, ITreeElement*> elements{{"null", nullptr}, {"root", root.get()},
            {"loner", loner.get()}, {"folder", folder}, {"leaf", leaf}, {"file", file}};

        elements[parent]->addChild(elements[child]);

        QCOMPARE(childNames(root.get()), QStringList({"folder", "leaf"}));
        QCOMPARE(childNames(folder), QStringList("file"));
        for (const ITreeElement* childless : {file, leaf, loner.get()})
            QVERIFY(!childless->firstChild());
        QVERIFY(!root->nextSibling());
        QVERIFY(!loner->nextSibling());
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

            while (ITreeElement* child = root->firstChild())
                tav_tree_element_release_instance(child);
            newChild(root.get(), "only");
            QCOMPARE(childNames(root.get()), QStringList("only"));
        }
    }

    void hugeTreesAreBuiltAndReleased_data()
    {
        QTest::addColumn<bool>("fromTheLeaves");
        QTest::addColumn<bool>("deep");
        QTest::newRow("deep, root first") << false << true;
        QTest::newRow("deep, leaf first") << true << true;
        QTest::newRow("wide") << false << false;
    }

    void hugeTreesAreBuiltAndReleased()
    {
        constexpr int size = 100'000;
        QFETCH(bool, fromTheLeaves);
        QFETCH(bool, deep);
        Tree root(newElement("root"));
        ITreeElement* parent = root.get();
        for (int i = 0; i < size; ++i) {
            if (fromTheLeaves) {
                Tree above(newElement("above"));
                above->addChild(root.release());
                root = std::move(above);
                continue;
            }
            ITreeElement* child = newChild(parent, "child");
            if (deep)
                parent = child;
        }

        int count = 0;
        for (const ITreeElement* e = root->firstChild(); e; e = deep ? e->firstChild() : e->nextSibling())
            ++count;
        QCOMPARE(count, size);
        root.reset();
    }

    void logGoesToTheSink()
    {
        loggedLines.clear();
        setLogSink(noteLine);
        SendLogInfo("conversion failed", 0);
        SendLogInfo("100% %s", 3);
        SendLogInfo(nullptr, 1);
        setLogSink(nullptr);
        QCOMPARE(loggedLines, QStringList({"0:conversion failed", "3:100% %s"}));
    }

    void logGoesToStandardErrorByDefault()
    {
        QProcess process;
        process.start(
            QCoreApplication::applicationFilePath(), {printScaledArgument, withoutApplicationArgument});
        QVERIFY(process.waitForFinished());
        QCOMPARE(process.readAllStandardError(), QByteArray("[2] printed 100%\n"));
    }

    void scalesWhatQtDoesNot_data()
    {
        // The desktop's scale is fixed when an application starts, so each row is a process of its own.
        QTest::addColumn<QStringList>("variables");
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<double>("scaled");
        const auto row = [](const char* name, const QStringList& variables, double scaled,
                             const QStringList& arguments = {}) {
            QTest::newRow(name) << variables << arguments << scaled;
        };
        const QString on = "QT_ENABLE_HIGHDPI_SCALING=1";
        row("no application", {"QT_FONT_DPI=192"}, 100.0, {withoutApplicationArgument});
        row("desktop 2, Qt off", {"QT_FONT_DPI=192"}, 200.0);
        row("desktop 2, Qt on", {"QT_FONT_DPI=192", on}, 100.0);
        row("desktop 1.5, Qt rounds to 1", {"QT_FONT_DPI=144", on, "QT_SCALE_FACTOR_ROUNDING_POLICY=Floor"},
            150.0);
    }

    void scalesWhatQtDoesNot()
    {
        QFETCH(QStringList, variables);
        QFETCH(QStringList, arguments);
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        for (const QString& name : environment.keys())
            if (name.startsWith("QT_") && name != "QT_PLUGIN_PATH")
                environment.remove(name);
        environment.insert("QT_QPA_PLATFORM", "offscreen");
        for (const QString& variable : variables)
            environment.insert(variable.section('=', 0, 0), variable.section('=', 1));
        QProcess process;
        process.setProcessEnvironment(environment);
        process.start(QCoreApplication::applicationFilePath(), QStringList(printScaledArgument) + arguments);

        QVERIFY(process.waitForFinished());
        QCOMPARE(process.exitCode(), 0);
        QTEST(process.readAllStandardOutput().toDouble(), "scaled");
    }

    void fileDialogStartsAndRemembers_data()
    {
        // Paths are relative to a directory with given/, last/ and other/drawing.dwg in it; "" stays empty.
        QTest::addColumn<bool>("forFile");
        QTest::addColumn<bool>("withSettings");
        QTest::addColumn<QString>("directory");
        QTest::addColumn<QString>("answer");
        QTest::addColumn<QString>("startedIn");
        QTest::addColumn<QString>("remembered");
        const auto row = [](const char* name, bool forFile, bool withSettings, const QString& directory,
                             const QString& answer, const QString& startedIn, const QString& remembered) {
            QTest::newRow(name) << forFile << withSettings << directory << answer << startedIn << remembered;
        };
        const QString drawing = "other/drawing.dwg";
        row("file, from given", true, true, "given", drawing, "given", "other");
        row("file, from last", true, true, "", drawing, "last", "other");
        row("file, cancelled", true, true, "", "", "last", "last");
        row("file, no settings", true, false, "given", drawing, "given", "last");
        row("directory, from last", false, true, "", "other", "last", "other");
        row("directory, cancelled", false, true, "given", "", "given", "last");
    }

    void fileDialogStartsAndRemembers()
    {
        QFETCH(bool, forFile);
        QFETCH(bool, withSettings);
        QFETCH(QString, directory);
        QFETCH(QString, answer);
        QFETCH(QString, startedIn);
        QFETCH(QString, remembered);
        const QTemporaryDir scratch;
        const QDir base(scratch.path());
        const auto path = [&base](
                              const QString& name) { return name.isEmpty() ? name : base.filePath(name); };
        for (const char* name : {"given", "last", "other"})
            QVERIFY(base.mkdir(name));
        QFile drawing(path("other/drawing.dwg"));
        QVERIFY(drawing.open(QIODevice::WriteOnly));
        drawing.close();
        TestSettings settings;
        settings.directory = path("last");

        QString opened;
        QTimer poll;
        withNextFileDialog(poll, [&](QFileDialog& dialog) {
            opened = dialog.directory().absolutePath();
            if (answer.isEmpty())
                return dialog.reject();
            dialog.findChild<QLineEdit*>("fileNameEdit")->setText(path(answer));
            QMetaObject::invokeMethod(&dialog, "accept");
        });
        ISystemSettings* used = withSettings ? &settings : nullptr;
        QString filter = "All (*)";
        const QString got = forFile
            ? FileDialog::getOpenFileName(
                used, nullptr, "Choose", path(directory), "(*.dwg);;All (*)", &filter)
            : FileDialog::getExistingDirectory(used, nullptr, "Choose", path(directory));

        QCOMPARE(got, path(answer));
        QCOMPARE(opened, path(startedIn));
        QCOMPARE(settings.directory, path(remembered));
        QCOMPARE(filter, QString("All (*)"));
    }
};

namespace {

int printScaled()
{
    std::printf("%.3f\n", dpi_scaled(100.0));
    std::fflush(stdout);
    SendLogInfo("printed 100%", 2);
    return 0;
}

} // namespace

int main(int argc, char** argv)
{
    const QByteArrayList arguments(argv + 1, argv + argc);
    if (arguments.contains(printScaledArgument)) {
        if (arguments.contains(withoutApplicationArgument))
            return printScaled();
        const QGuiApplication application(argc, argv);
        return printScaled();
    }
    QCoreApplication::setAttribute(Qt::AA_DontUseNativeDialogs);
    const QApplication application(argc, argv);
    TestHost test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_host.moc"
