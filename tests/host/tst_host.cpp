// SPDX-License-Identifier: MIT
#include "core/ITreeElement.h"
#include "core/Log.h"
#include "core/Screen.h"
#include "toolkit/Dialog.h"
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
    void dictionaryKeepsTheLastValueOfEachKey();
    void dictionaryIgnoresNull();

    void elementCopiesNameAndAttributes();
    void elementWithoutNameOrAttributes();
    void childrenKeepTheirOrder();
    void findChildLooksOneLevelDownAndTakesTheFirst();
    void addChildRefuses_data();
    void addChildRefuses();
    void addChildTakesAWholeSubtree();
    void releaseDetachesFromTheParent_data();
    void releaseDetachesFromTheParent();
    void hugeTreesAreBuiltAndReleased_data();
    void hugeTreesAreBuiltAndReleased();

    void logGoesToTheSink();
    void logGoesToStandardErrorByDefault();
    void scalesWhatQtDoesNot_data();
    void scalesWhatQtDoesNot();

    void dialogIsModalWithoutHelpButton();
    void defaultSettingsRemember();
    void fileDialogStartsAndRemembers_data();
    void fileDialogStartsAndRemembers();
};

void TestHost::dictionaryKeepsTheLastValueOfEachKey()
{
    const Dictionary dictionary(dictionary_get_instance());
    QCOMPARE(contents(dictionary.get()), QStringList());

    // The caller's buffers are copied: what happens to them afterwards does not matter.
    QByteArray key("type"), value("0");
    dic_set_value(dictionary.get(), key.constData(), value.constData());
    key.fill('x');
    value.fill('x');
    dic_set_value(dictionary.get(), "fileId", "a longer value that needs an allocation of its own");
    dic_set_value(dictionary.get(), "fileId", "");
    dic_set_value(dictionary.get(), "", "empty key");

    QCOMPARE(dic_get_value(dictionary.get(), "type"), "0");
    QCOMPARE(dic_get_value(dictionary.get(), "fileId"), "");
    QCOMPARE(dic_get_value(dictionary.get(), "Type"), static_cast<const char*>(nullptr));
    QCOMPARE(contents(dictionary.get()), QStringList({"=empty key", "fileId=", "type=0"}));
}

void TestHost::dictionaryIgnoresNull()
{
    const Dictionary dictionary(dictionary_get_instance());
    dic_set_value(dictionary.get(), "type", "0");
    dic_set_value(dictionary.get(), "type", nullptr);
    dic_set_value(dictionary.get(), nullptr, "1");
    dic_set_value(nullptr, "type", "1");
    dic_for_each(dictionary.get(), nullptr, nullptr);
    dictionary_release_instance(nullptr);

    QCOMPARE(contents(dictionary.get()), QStringList("type=0"));
    QCOMPARE(contents(nullptr), QStringList());
    QVERIFY(!dic_get_value(dictionary.get(), nullptr));
    QVERIFY(!dic_get_value(nullptr, "type"));
}

void TestHost::elementCopiesNameAndAttributes()
{
    Dictionary dictionary(dictionary_get_instance());
    dic_set_value(dictionary.get(), "type", "1");
    dic_set_value(dictionary.get(), "fileId", "first");
    QByteArray name("Survey.dat");
    const Tree first(tav_tree_element_create_instance(name.constData(), dictionary.get(), ""));
    name.fill('x');
    dic_set_value(dictionary.get(), "fileId", "second");
    dic_set_value(dictionary.get(), "projectId", "7");
    const Tree second(tav_tree_element_create_instance("other", dictionary.get(), nullptr));
    dictionary.reset();

    QCOMPARE(first->name(), "Survey.dat");
    QCOMPARE(first->properties().value("type"), "1");
    QCOMPARE(first->properties().value("fileId"), "first");
    QVERIFY(!first->properties().value("projectId"));
    QVERIFY(!first->properties().value(nullptr));
    QCOMPARE(second->properties().value("fileId"), "second");
    QCOMPARE(second->properties().value("projectId"), "7");
}

void TestHost::elementWithoutNameOrAttributes()
{
    const Tree element(tav_tree_element_create_instance(nullptr, nullptr, nullptr));
    QCOMPARE(element->name(), "");
    QVERIFY(!element->properties().value("type"));
    QVERIFY(!element->firstChild());
    QVERIFY(!element->nextSibling());
    tav_tree_element_release_instance(nullptr);
}

void TestHost::childrenKeepTheirOrder()
{
    const Tree root(newElement("root"));
    for (const char* name : {"c", "a", "b", "a"})
        newChild(root.get(), name);
    QCOMPARE(childNames(root.get()), QStringList({"c", "a", "b", "a"}));
    QVERIFY(!root->nextSibling());
}

void TestHost::findChildLooksOneLevelDownAndTakesTheFirst()
{
    const Tree root(newElement("root"));
    ITreeElement* folder = newChild(root.get(), "folder");
    newChild(folder, "file");
    ITreeElement* twin = newChild(root.get(), "twin");
    newChild(root.get(), "twin");

    QCOMPARE(root->findChild("twin"), twin);
    QVERIFY(!root->findChild("file"));
    QVERIFY(folder->findChild("file"));
    QVERIFY(!root->findChild("Twin"));
    QVERIFY(!root->findChild("twi"));
    QVERIFY(!root->findChild(nullptr));
}

void TestHost::addChildRefuses_data()
{
    // The tree is root / folder / file, with leaf as root's second child and loner as an element by itself.
    QTest::addColumn<QByteArray>("parent");
    QTest::addColumn<QByteArray>("child");
    QTest::newRow("null") << QByteArray("folder") << QByteArray("null");
    QTest::newRow("itself, without children") << QByteArray("loner") << QByteArray("loner");
    QTest::newRow("itself, with children") << QByteArray("root") << QByteArray("root");
    QTest::newRow("its parent's other child") << QByteArray("folder") << QByteArray("leaf");
    QTest::newRow("its own child again") << QByteArray("folder") << QByteArray("file");
    QTest::newRow("another tree's child") << QByteArray("loner") << QByteArray("folder");
    QTest::newRow("its parent, a root") << QByteArray("folder") << QByteArray("root");
    QTest::newRow("a root further up") << QByteArray("file") << QByteArray("root");
    QTest::newRow("its parent, no root") << QByteArray("file") << QByteArray("folder");
}

void TestHost::addChildRefuses()
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

void TestHost::addChildTakesAWholeSubtree()
{
    const Tree root(newElement("root"));
    ITreeElement* folder = newChild(root.get(), "folder");
    ITreeElement* branch = newElement("branch");
    newChild(branch, "file");
    folder->addChild(branch);

    QCOMPARE(childNames(folder), QStringList("branch"));
    QCOMPARE(childNames(branch), QStringList("file"));
}

void TestHost::releaseDetachesFromTheParent_data()
{
    QTest::addColumn<QByteArray>("released");
    QTest::addColumn<QStringList>("left");
    QTest::newRow("first") << QByteArray("a") << QStringList({"b", "c", "new"});
    QTest::newRow("middle") << QByteArray("b") << QStringList({"a", "c", "new"});
    QTest::newRow("last") << QByteArray("c") << QStringList({"a", "b", "new"});
}

void TestHost::releaseDetachesFromTheParent()
{
    QFETCH(QByteArray, released);
    const Tree root(newElement("root"));
    for (const char* name : {"a", "b", "c"})
        newChild(newChild(root.get(), name), "below");

    tav_tree_element_release_instance(root->findChild(released.constData()));
    newChild(root.get(), "new");
    QTEST(childNames(root.get()), "left");

    while (ITreeElement* child = root->firstChild())
        tav_tree_element_release_instance(child);
    newChild(root.get(), "only");
    QCOMPARE(childNames(root.get()), QStringList("only"));
}

void TestHost::hugeTreesAreBuiltAndReleased_data()
{
    QTest::addColumn<bool>("fromTheLeaves");
    QTest::addColumn<bool>("deep");
    QTest::newRow("deep, root first") << false << true;
    QTest::newRow("deep, leaf first") << true << true;
    QTest::newRow("wide") << false << false;
}

void TestHost::hugeTreesAreBuiltAndReleased()
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

void TestHost::logGoesToTheSink()
{
    loggedLines.clear();
    setLogSink(noteLine);
    SendLogInfo("conversion failed", 0);
    SendLogInfo("100% %s", 3);
    SendLogInfo(nullptr, 1);
    setLogSink(nullptr);
    QCOMPARE(loggedLines, QStringList({"0:conversion failed", "3:100% %s"}));
}

void TestHost::logGoesToStandardErrorByDefault()
{
    QProcess process;
    process.start(QCoreApplication::applicationFilePath(), {printScaledArgument, withoutApplicationArgument});
    QVERIFY(process.waitForFinished());
    QCOMPARE(process.readAllStandardError(), QByteArray("[2] printed 100%\n"));
}

void TestHost::scalesWhatQtDoesNot_data()
{
    // The desktop's scale is fixed when an application starts, so each row is a process of its own.
    QTest::addColumn<QStringList>("variables");
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<double>("scaled");
    const QStringList none;
    QTest::newRow("no application") << QStringList("QT_FONT_DPI=192")
                                    << QStringList(withoutApplicationArgument) << 100.0;
    QTest::newRow("desktop 1") << QStringList("QT_FONT_DPI=96") << none << 100.0;
    QTest::newRow("desktop 2, Qt off") << QStringList("QT_FONT_DPI=192") << none << 200.0;
    QTest::newRow("desktop 2, Qt on")
        << QStringList({"QT_FONT_DPI=192", "QT_ENABLE_HIGHDPI_SCALING=1"}) << none << 100.0;
    QTest::newRow("desktop 1.5, Qt rounds to 1") << QStringList(
        {"QT_FONT_DPI=144", "QT_ENABLE_HIGHDPI_SCALING=1", "QT_SCALE_FACTOR_ROUNDING_POLICY=Floor"})
                                                 << none << 150.0;
    QTest::newRow("desktop 1, Qt told 2")
        << QStringList({"QT_FONT_DPI=96", "QT_SCALE_FACTOR=2"}) << none << 100.0;
}

void TestHost::scalesWhatQtDoesNot()
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

void TestHost::dialogIsModalWithoutHelpButton()
{
    QWidget window;
    auto* dialog = new Dialog(&window);
    QVERIFY(dialog->isModal());
    QVERIFY(dialog->isWindow());
    QVERIFY(!(dialog->windowFlags() & Qt::WindowContextHelpButtonHint));
    QCOMPARE(dialog->parentWidget(), &window);
}

void TestHost::defaultSettingsRemember()
{
    QVERIFY(pSystemSettings);
    QCOMPARE(pSystemSettings->lastDirectory(), QString());
    pSystemSettings->setLastDirectory("/somewhere");
    QCOMPARE(pSystemSettings->lastDirectory(), QString("/somewhere"));
    pSystemSettings->setLastDirectory(QString());
}

void TestHost::fileDialogStartsAndRemembers_data()
{
    // Paths are relative to a directory with given/, last/ and other/drawing.dwg in it; "" stays empty.
    QTest::addColumn<bool>("forFile");
    QTest::addColumn<bool>("withSettings");
    QTest::addColumn<QString>("directory");
    QTest::addColumn<QString>("answer");
    QTest::addColumn<QString>("startedIn");
    QTest::addColumn<QString>("remembered");
    QTest::newRow("file, from given") << true << true << "given"
                                      << "other/drawing.dwg"
                                      << "given"
                                      << "other";
    QTest::newRow("file, from last") << true << true << ""
                                     << "other/drawing.dwg"
                                     << "last"
                                     << "other";
    QTest::newRow("file, cancelled") << true << true << ""
                                     << ""
                                     << "last"
                                     << "last";
    QTest::newRow("file, no settings") << true << false << "given"
                                       << "other/drawing.dwg"
                                       << "given"
                                       << "last";
    QTest::newRow("directory, from given") << false << true << "given"
                                           << "other"
                                           << "given"
                                           << "other";
    QTest::newRow("directory, from last") << false << true << ""
                                          << "other"
                                          << "last"
                                          << "other";
    QTest::newRow("directory, cancelled") << false << true << "given"
                                          << ""
                                          << "given"
                                          << "last";
    QTest::newRow("directory, no settings") << false << false << "given"
                                            << "other"
                                            << "given"
                                            << "last";
}

void TestHost::fileDialogStartsAndRemembers()
{
    QFETCH(bool, forFile);
    QFETCH(bool, withSettings);
    QFETCH(QString, directory);
    QFETCH(QString, answer);
    QFETCH(QString, startedIn);
    QFETCH(QString, remembered);
    const QTemporaryDir scratch;
    const QDir base(scratch.path());
    const auto path = [&base](const QString& name) { return name.isEmpty() ? name : base.filePath(name); };
    for (const char* name : {"given", "last", "other"})
        QVERIFY(base.mkdir(name));
    QFile drawing(path("other/drawing.dwg"));
    QVERIFY(drawing.open(QIODevice::WriteOnly));
    drawing.close();
    TestSettings settings;
    settings.directory = path("last");

    QString opened, title;
    QTimer poll;
    withNextFileDialog(poll, [&](QFileDialog& dialog) {
        opened = dialog.directory().absolutePath();
        title = dialog.windowTitle();
        if (answer.isEmpty())
            return dialog.reject();
        dialog.findChild<QLineEdit*>("fileNameEdit")->setText(path(answer));
        QMetaObject::invokeMethod(&dialog, "accept");
    });
    ISystemSettings* used = withSettings ? &settings : nullptr;
    QString filter = "All (*)";
    const QString got = forFile
        ? FileDialog::getOpenFileName(used, nullptr, "Choose", path(directory), "(*.dwg);;All (*)", &filter)
        : FileDialog::getExistingDirectory(used, nullptr, "Choose", path(directory));

    QCOMPARE(got, path(answer));
    QCOMPARE(title, QString("Choose"));
    QCOMPARE(opened, path(startedIn));
    QCOMPARE(settings.directory, path(remembered));
    QCOMPARE(filter, QString("All (*)"));
}

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
