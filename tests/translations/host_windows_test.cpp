// The demo host's windows, in English, in German and in the pseudo language.
#include "documentdialog.h"
#include "mainwindow.h"
#include "previewdialog.h"
#include "replayview.h"
#include "shown.h"

#include <QApplication>
#include <QDir>
#include <QEventLoop>
#include <QFile>
#include <QTemporaryDir>
#include <QTranslator>

#include <gtest/gtest.h>

namespace {

// Hosts find the driver in the current folder.
class HostIn : public testing::Test
{
protected:
    void SetUp() override { ASSERT_TRUE(QDir::setCurrent(m_folder.path())); }
    void TearDown() override { QDir::setCurrent(QStringLiteral("/")); }

    static void plugIn(const char* key)
    {
        ASSERT_TRUE(
            QFile::link(QStringLiteral(SCRIBERA_DRIVER_LIBRARY), QStringLiteral("libscriberadrv.so")));
        qputenv("SCRIBERA_SIM_RECORDING", SCRIBERA_RECORDINGS "/initials.rec");
        qputenv("SCRIBERA_SIM_RATE", "max");
        qputenv("SCRIBERA_SIM_KEY", key);
    }
    static void expectNoFaults(QWidget& window) { EXPECT_EQ(faultsOf(window).join('\n').toStdString(), ""); }

private:
    QTemporaryDir m_folder;
};

} // namespace

TEST_F(HostIn, NoPad)
{
    MainWindow window(QStringLiteral("K421B"));
    expectNoFaults(window);
    window.openPad();
    expectNoFaults(window);
}

TEST_F(HostIn, ASignatureFromTheEmptyFormToTheFile)
{
    plugIn("confirm");
    MainWindow window(QStringLiteral("K421B"));
    window.show();
    bool isDone = false;
    QObject::connect(
        &window, &MainWindow::confirmed, &window, [&] { isDone = true; }, Qt::QueuedConnection);
    QObject::connect(&window, &MainWindow::noPad, &window, [&] { isDone = true; });
    window.openPad();
    expectNoFaults(window);
    while (!isDone)
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    ASSERT_FALSE(window.signature().ink.isEmpty());
    expectNoFaults(window);
    PreviewDialog preview(window.signature());
    expectNoFaults(preview);
    ReplayView replay(window.signature().ink);
    expectNoFaults(replay);
    DocumentDialog document(window.signature().ink, QStringLiteral("K421B"), {});
    expectNoFaults(document);
}

TEST_F(HostIn, ACancelledSignature)
{
    plugIn("cancel");
    MainWindow window(QStringLiteral("K210"));
    window.show();
    bool isDone = false;
    QObject::connect(
        &window, &MainWindow::cancelled, &window, [&] { isDone = true; }, Qt::QueuedConnection);
    QObject::connect(&window, &MainWindow::noPad, &window, [&] { isDone = true; });
    window.openPad();
    while (!isDone)
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    expectNoFaults(window);
}

int main(int argc, char** argv)
{
    testing::InitGoogleTest(&argc, argv);
    const QApplication application(argc, argv);
    QApplication::setStyle(QStringLiteral("Fusion")); // as the host does
    QTranslator translator;
    const QString catalogue = qEnvironmentVariable("SCRIBERA_HOST_CATALOGUE");
    if (!catalogue.isEmpty() && !translator.load(catalogue)) // English needs none
        return 1;
    QCoreApplication::installTranslator(&translator);
    if (isPseudo()) // as Qt's own catalogue of such a language says
        QApplication::setLayoutDirection(Qt::RightToLeft);
    return RUN_ALL_TESTS();
}
