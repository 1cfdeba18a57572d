// SPDX-License-Identifier: MIT
// What the stand-ins do beyond what the module asks of a host, which is in tst_hostcontract.cpp.
#include "core/ITreeElement.h"
#include "core/Screen.h"
#include "toolkit/Dialog.h"
#include "toolkit/FileDialog.h"
#include "toolkit/ISystemSettings.h"

#include <QtTest>
#include <QtWidgets>

#include <cstdio>
#include <memory>

namespace {

constexpr auto printScaledArgument = "--print-scaled";

using Tree = std::unique_ptr<ITreeElement, decltype(&tav_tree_element_release_instance)>;

ITreeElement* newElement(ITreeElement* parent, const char* name)
{
    ITreeElement* element = tav_tree_element_create_instance(name, nullptr, "");
    if (parent)
        parent->addChild(element);
    return element;
}

QByteArrayList childNames(const ITreeElement& parent)
{
    QByteArrayList names;
    for (const ITreeElement* child = parent.firstChild(); child; child = child->nextSibling())
        names << child->name();
    return names;
}

struct SizedDialog : Dialog
{
    explicit SizedDialog(const QString& name)
    {
        setObjectName(name);
        resize(300, 200);
        show();
    }
};

} // namespace

class TestHost : public QObject
{
    Q_OBJECT

private slots:
    void treeRefusesCycles()
    {
        const Tree root(newElement(nullptr, "root"), tav_tree_element_release_instance);
        const Tree loner(newElement(nullptr, "loner"), tav_tree_element_release_instance);
        ITreeElement* folder = newElement(root.get(), "folder");
        ITreeElement* file = newElement(folder, "file");
        newElement(root.get(), "a");
        newElement(root.get(), "a");
        folder->addChild(nullptr);
        loner->addChild(loner.get());
        loner->addChild(folder); // another tree's
        file->addChild(root.get()); // its own root
        QCOMPARE(childNames(*root), QByteArrayList({"folder", "a", "a"}));
        QCOMPARE(childNames(*folder), QByteArrayList({"file"}));
        QVERIFY(!file->firstChild() && !loner->firstChild());

        for (const char* released : {"a", "new", "a", "folder"}) { // in between, at the end, at the begin
            tav_tree_element_release_instance(root->findChild(released));
            newElement(root.get(), "new");
        }
        QCOMPARE(childNames(*root), QByteArrayList({"new", "new", "new"}));
        ITreeElement* deepest = root.get();
        for (int i = 0; i < 100'000; ++i) // releasing them by recursion would overflow the stack
            deepest = newElement(deepest, "child");
    }

    void scalesWhatQtDoesNot()
    {
        // The desktop's scale, 1.5 here, of which Qt takes 1, is fixed when an application starts.
        QProcess process;
        process.start("env",
            {"QT_FONT_DPI=144", "QT_ENABLE_HIGHDPI_SCALING=1", "QT_SCALE_FACTOR_ROUNDING_POLICY=Floor",
                QApplication::applicationFilePath(), printScaledArgument});
        QVERIFY(process.waitForFinished());
        QCOMPARE(process.readAllStandardOutput().toDouble(), 150.0);
    }

    void fileDialogStartsWhereItWasLastUsed()
    {
        // Paths in a folder with given/, last/ and other/ in it; "" stays empty.
        const struct
        {
            QStringList paths; // told to start in, answered, started in, remembered
            bool isFolder = false;
            ISystemSettings* settings = pSystemSettings;
        } rows[]{
            {{"given", "other/plan.dwg", "given", "other"}},
            {{"", "", "last", "last"}}, // cancelled
            {{"given", "other/plan.dwg", "given", "last"}, false, nullptr},
            {{"", "other", "last", "other"}, true},
        };
        for (auto [paths, isFolder, settings] : rows) {
            const QTemporaryDir scratch;
            const QDir base(scratch.path());
            for (QString& path : paths)
                path = path.isEmpty() ? path : base.filePath(path);
            QVERIFY(base.mkpath("given") && base.mkpath("last") && base.mkpath("other"));
            QVERIFY(QFile(base.filePath("other/plan.dwg")).open(QIODevice::WriteOnly));
            pSystemSettings->setLastDirectory(base.filePath("last"));

            QString opened;
            bool foldersOnly = false;
            QTimer::singleShot(0, this, [&, answer = paths[1]] {
                auto* dialog = qobject_cast<QFileDialog*>(QApplication::activeModalWidget());
                opened = dialog->directory().absolutePath();
                foldersOnly = dialog->testOption(QFileDialog::ShowDirsOnly);
                dialog->findChild<QLineEdit*>("fileNameEdit")->setText(answer);
                QMetaObject::invokeMethod(dialog, answer.isEmpty() ? "reject" : "accept");
                if (dialog->isVisible()) // it does not take the answer
                    dialog->reject();
            });
            const QString got = isFolder
                ? FileDialog::getExistingDirectory(settings, nullptr, "Choose", paths[0])
                : FileDialog::getOpenFileName(settings, nullptr, "Choose", paths[0], "All (*)");
            QCOMPARE(QStringList({got, opened, pSystemSettings->lastDirectory()}), paths.mid(1));
            QCOMPARE(foldersOnly, isFolder);
        }
    }

    void dialogOpensAsLargeAsTheUserMadeIt()
    {
        for (const QString name : {"space", ""}) { // without a name no size is kept
            SizedDialog first(name);
            first.resize(310, 210); // not by the user
            QResizeEvent repeated(first.size(), first.size()); // by the window system
            QSpontaneKeyEvent::setSpontaneous(&repeated);
            qApp->notify(&first, &repeated);
            QCOMPARE(SizedDialog(name).size(), QSize(300, 200));
            first.windowHandle()->resize(320, 220);
            QTRY_COMPARE(first.size(), QSize(320, 220));
            QCOMPARE(SizedDialog(name).size(), name.isEmpty() ? QSize(300, 200) : QSize(320, 220));
        }
        pSystemSettings->setWindowSize("space", QSize(100'000, 100'000)); // on another screen, say
        const SizedDialog huge("space");
        const QSize title(0, huge.style()->pixelMetric(QStyle::PM_TitleBarHeight));
        QCOMPARE(huge.size(), huge.screen()->availableSize() - title);
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
