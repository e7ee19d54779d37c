// The window of scribera-pad sign, from inside.
#include "interrupts.h"
#include "padsupport.h"
#include "signwindow.h"

#include <QApplication>
#include <QKeyEvent>
#include <QPushButton>
#include <QTimer>

#include <functional>

namespace {

class PadWindow : public PadToolTest
{
protected:
    static QPushButton* button(const SignWindow& window, const char* text)
    {
        for (QPushButton* const found : window.findChildren<QPushButton*>())
            if (found->text() == text)
                return found;
        ADD_FAILURE() << "no button " << text;
        return nullptr;
    }

    // Signs with the whole recording on the pad; then the person does something, again and again until that
    // ends it.
    Signing::State signedBy(const std::function<void(SignWindow&, const Signing&)>& act)
    {
        qputenv("SCRIBERA_SIM_RECORDING", padRecording("initials.rec").toLocal8Bit());
        qputenv("SCRIBERA_SIM_RATE", "max");
        static const CPadModel& model = *AllPads().front();
        const QSize canvas = canvasFor(model, 400);
        SignatureFiles files({path("a.png")}, Look());
        SignWindow window(canvas);
        std::optional<Signing::State> state;
        {
            Session session(model, {SCRIBERA_DRIVER_LIBRARY, Driver::Kind::Simulated}, window.canvasParent(),
                            canvas);
            const Taking take = [&files](const Session& open) { return files.take(open); };
            Signing signing(session, take);
            QTimer person;
            QObject::connect(&person, &QTimer::timeout, [&] { act(window, signing); });
            person.start(10);
            state = window.run(session, signing, Deadline(60));
            m_points = signing.strokes().points();
        }
        if (state == Signing::State::Confirmed && m_points > 0)
            files.write();
        return state.value_or(Signing::State::Going);
    }

    int m_points = -1;
};

constexpr int recorded = 407;

TEST_F(PadWindow, TheButtonConfirmsOnceThereIsInk)
{
    bool wasEnabledEarly = false;
    EXPECT_EQ(signedBy([&](SignWindow& window, const Signing& signing) {
                  QPushButton* const confirm = button(window, "Confirm");
                  wasEnabledEarly = wasEnabledEarly || (confirm->isEnabled() && !signing.strokes().hasInk());
                  if (signing.strokes().points() == recorded)
                      confirm->click();
              }),
              Signing::State::Confirmed);
    EXPECT_FALSE(wasEnabledEarly);
    EXPECT_TRUE(readFile(path("a.png")).startsWith(QByteArray::fromHex("89504e47")));
}

TEST_F(PadWindow, EnterConfirmsAndEscapeCancels)
{
    const auto press = [](Qt::Key key) {
        return [key](SignWindow& window, const Signing& signing) {
            QKeyEvent event(QEvent::KeyPress, key, Qt::NoModifier);
            if (signing.strokes().points() == recorded)
                QApplication::sendEvent(&window, &event);
        };
    };
    EXPECT_EQ(signedBy(press(Qt::Key_Return)), Signing::State::Confirmed);
    EXPECT_EQ(signedBy(press(Qt::Key_Escape)), Signing::State::Cancelled);
}

TEST_F(PadWindow, TheOtherButtonAndClosingCancel)
{
    EXPECT_EQ(signedBy([](SignWindow& window, const Signing&) { button(window, "Cancel")->click(); }),
              Signing::State::Cancelled);
    EXPECT_EQ(signedBy([](SignWindow& window, const Signing&) { window.close(); }),
              Signing::State::Cancelled);
}

TEST_F(PadWindow, ClearingBeginsAnew)
{
    bool isCleared = false;
    EXPECT_EQ(signedBy([&](SignWindow& window, const Signing& signing) {
                  if (isCleared)
                      window.close();
                  if (signing.strokes().points() != recorded)
                      return;
                  button(window, "Clear")->click();
                  isCleared = true;
              }),
              Signing::State::Cancelled);
    EXPECT_EQ(m_points, 0);
}

} // namespace

// Read by the leak checker where the tests are built with it. Fontconfig keeps what it parsed until the
// process ends and loses its own pointer to it.
extern "C" const char* __lsan_default_suppressions()
{
    return "leak:libfontconfig.so\n";
}

extern "C" const char* __lsan_default_options()
{
    return "print_suppressions=0";
}

int main(int argc, char** argv)
{
    testing::InitGoogleTest(&argc, argv);
    if (testing::GTEST_FLAG(list_tests))
        return RUN_ALL_TESTS();
    qputenv("QT_QPA_PLATFORM", "offscreen");
    qputenv("SCRIBERA_WORKERS", "wait");
    catchInterrupts();
    // Never destroyed: the screen of the offscreen platform would be lost with it.
    [[maybe_unused]] static const auto* const application = new QApplication(argc, argv);
    return RUN_ALL_TESTS();
}
