// The windows of the virtual pad and of scribera-pad, in English, in German and in the pseudo language.
#include "catalogues.h"
#include "fingerdialog.h"
#include "mainwindow.h"
#include "shown.h"
#include "signwindow.h"
#include "text.h"

#include <QAction>
#include <QApplication>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QPushButton>
#include <QStatusBar>

#include <gtest/gtest.h>

namespace {

std::string joined(const QStringList& faults)
{
    return faults.join(QLatin1Char('\n')).toStdString();
}

} // namespace

TEST(VirtualPadIn, EveryModel)
{
    for (const CPadModel* const model : AllPads()) {
        SCOPED_TRACE(model->m_pszName);
        virtualpad::VirtualPad pad(*simulator::padForModel(std::string("SC") + model->m_pszName));
        virtualpad::MainWindow window(pad);
        EXPECT_EQ(joined(faultsOf(window)), "");
        for (QMenu* const menu : window.menuBar()->findChildren<QMenu*>()) {
            menu->ensurePolished();
            menu->resize(menu->sizeHint());
            EXPECT_EQ(joined(faultsOf(*menu)), "");
            menu->hide();
        }
    }
}

TEST(VirtualPadIn, WhatTheStatusLineTells)
{
    virtualpad::VirtualPad pad(*simulator::padForModel("SCK210"));
    virtualpad::MainWindow window(pad);
    pad.startRecording();
    EXPECT_EQ(joined(faultsOf(window)), "");
    pad.stopRecording();
    Q_EMIT pad.noticed(virtualpad::VirtualPad::tr("The host was disconnected: %1")
                           .arg(virtualpad::PadServer::tr("it did not introduce itself")));
    EXPECT_FALSE(window.statusBar()->currentMessage().isEmpty());
    window.resize(1400, 600); // what goes wrong may be of any length
    EXPECT_EQ(joined(faultsOf(window)), "");
}

TEST(VirtualPadIn, TheFingerDialog)
{
    for (const char* const source : {"loop", "/dev/null", ""}) {
        SCOPED_TRACE(source);
        virtualpad::FingerDialog dialog(source);
        EXPECT_EQ(joined(faultsOf(dialog)), "");
    }
}

TEST(SignWindowIn, EveryState)
{
    for (const QSize& canvas : {QSize(800, 400), QSize(200, 100)}) {
        SignWindow window(canvas);
        auto* const state = window.findChild<QLabel*>();
        const QString strokes = Text::tr("%1, %2, %3 s", "strokes, points, seconds")
                                    .arg(strokesText(12), pointsText(3456), numberText(12.3, 1));
        for (const QString& text : {state->text(), strokes, Text::tr("The pad does not answer")}) {
            state->setText(text);
            EXPECT_EQ(joined(faultsOf(window)), "");
        }
    }
}

int main(int argc, char** argv)
{
    testing::InitGoogleTest(&argc, argv);
    const QApplication application(argc, argv);
    loadCatalogues();
    return RUN_ALL_TESTS();
}
