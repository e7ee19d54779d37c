// What a sign object offers and no exported function uses.

#include "fingerprint_reference.h"

#include "log/logfileutil.h"
#include "signobj/signobj.h"
#include "signobject/liveobject.h"

#include <atomic>
#include <memory>
#include <thread>

namespace scribera::test {
namespace {

// Of the library's objects that this program holds itself. Their threads look at the switch.
void enableLog(bool enables)
{
    std::atomic_ref(g_bEnableLog).store(enables ? 1 : 0);
}

std::unique_ptr<CSignObj> makeObject(const PadModel& model)
{
    for (const CPadModel* row : AllPads()) {
        if (row->m_nDeviceType == model.deviceType)
            return MakeSignObj(*row, 400, 200);
    }
    return nullptr;
}

class SignObject : public testing::TestWithParam<PadCase>
{
protected:
    void SetUp() override
    {
        installDriver();
        m_object = makeObject(*GetParam().model);
        ASSERT_NE(m_object, nullptr);
        CLiveObject::CStart start;
        ASSERT_EQ(start.Begin(true), CLiveObject::CStart::EAnswer::Begun);
        start.Publish(*m_object, m_object->Identity(), m_object.get());
        CStartFailure failure;
        ASSERT_TRUE(m_object->IsDeviceConnected(failure));
        EXPECT_EQ(failure.Code(), SCRX_START_OK);
        m_simulator.open();
    }

    void TearDown() override
    {
        enableLog(false);
        if (m_object) {
            const CLiveObject::CEnding ending(*m_object);
            m_object->Shutdown();
        }
        m_object.reset();
    }

    QImage savedCanvas()
    {
        wchar_t path[] = L"canvas.bmp";
        EXPECT_EQ(m_object->Export().SaveDrawingImage(EBITI_BITMAP, path, 300), ARI_SUCCESS);
        return QImage("canvas.bmp");
    }

    std::unique_ptr<CSignObj> m_object;
    Simulator m_simulator;
};

TEST_P(SignObject, TakesNoPrintThatIsNotThere)
{
    m_simulator.close();
    m_object->RxSignPadFPRawData(nullptr, 100, 1);
    Bytes print = ridges(1);
    if (!GetParam().model->hasFingerprint)
        m_object->RxSignPadFPRawData(print.data(), static_cast<int>(print.size()), 1);
    EXPECT_EQ(m_object->PointQueries().GetTotalInkPointsNumber(), -8);
    wchar_t path[] = L"nothing.bmp";
    EXPECT_EQ(m_object->Export().SaveDrawingImage(EBITI_BITMAP, path, 300), -8);
}

TEST_P(SignObject, FindsTheInkOfItsCanvas)
{
    m_simulator.send(stroke(*GetParam().model, {{0.3, 0.4}, {0.6, 0.5}, {0.5, 0.7}}));
    const QImage canvas = savedCanvas();
    const auto found = [this](int marginX, int marginY) {
        EXPECT_EQ(m_object->Export().SetSaveClipImageMargin(true, marginX, marginY), ARI_SUCCESS);
        return m_object->Export().CheckSignImageBoundingBox();
    };
    EXPECT_EQ(found(0, 0), inkBox(canvas, 0, 0));
    EXPECT_EQ(found(3, 17), inkBox(canvas, 3, 17));
    EXPECT_EQ(found(1000, 1000), canvas.rect());
}

TEST_P(SignObject, KnowsNoPictureForATypeThatIsNone)
{
    m_simulator.send(stroke(*GetParam().model, {{0.3, 0.4}, {0.6, 0.5}}));
    wchar_t path[] = L"nothing.bmp";
    for (const int type : {-1, 0, 100}) {
        EXPECT_EQ(m_object->Export().SaveDrawingImage(type, path, 300), -8) << type;
        EXPECT_EQ(m_object->Export().Base64Encode(type), nullptr) << type;
        EXPECT_EQ(m_object->Export().Base64Decode(type, "AA==", path), -8) << type;
    }
}

TEST_P(SignObject, HasNoValueForANumberThatNamesNone)
{
    m_simulator.send(stroke(*GetParam().model, {{0.3, 0.4}, {0.6, 0.5}}));
    CSignExport& exporter = m_object->Export();
    const std::unique_ptr<char[]> text(exporter.Base64Encode(EBITI_INK));
    ASSERT_EQ(exporter.Base64Decode(EBITI_INK, text.get(), nullptr), ARI_SUCCESS);
    EXPECT_EQ(exporter.GetDecodePACKETS(0, INKDATATYPE_X - 1), -8);
    EXPECT_EQ(exporter.GetDecodePACKETS(0, INKDATATYPE_STROKEEND + 1), -8);
    EXPECT_NE(exporter.GetDecodePACKETS(0, INKDATATYPE_X), -8);
}

TEST_P(SignObject, MakesOneColourTransparent)
{
    QImage image(3, 2, QImage::Format_ARGB32);
    const QRgb pixels[] = {0xffffffff, 0xff0000ff, 0xfeffffff, 0x00ffffff, 0xffffffff, 0xfffffffe};
    const QRgb expected[] = {0x00ffffff, 0xff0000ff, 0xfeffffff, 0x00ffffff, 0x00ffffff, 0xfffffffe};
    for (int i = 0; i < 6; ++i)
        image.setPixel(i % 3, i / 3, pixels[i]);
    removeLogs();
    enableLog(true);
    m_object->Export().MakeAsTransparentImage(image, Qt::white);
    enableLog(false);
    for (int i = 0; i < 6; ++i)
        EXPECT_EQ(image.pixel(i % 3, i / 3), expected[i]) << i;
    EXPECT_EQ(textsOf(mainLog(), GetParam().method("MakeAsTransparentImage")),
              (Texts{"Enter, nWidth=3, nHeight=2", "leave"}));

    removeLogs();
    image.setPixel(0, 0, 0xffffffff);
    m_object->Export().MakeAsTransparentImage(image, Qt::white);
    EXPECT_EQ(image.pixel(0, 0), 0x00ffffffU);
    EXPECT_EQ(textsOf(mainLog(), GetParam().method("MakeAsTransparentImage")), Texts{});
}

// Pads without a screen have no such id.
TEST_P(SignObject, AsksTheDriverForTheSecureIdWhileThereIsOne)
{
    m_simulator.setText("SCRDAPI_GetDeviceSecureID", "S-0042");
    m_simulator.close(); // else the driver would stay
    char text[16] = "untouched";
    const auto ask = [&] {
        removeLogs();
        enableLog(true);
        const int result = m_object->DeviceQueries().GetDeviceSecureID(text, sizeof text);
        enableLog(false);
        EXPECT_EQ(textsOf(mainLog(), GetParam().method("GetDeviceSecureID")),
                  (Texts{"enter, pSecureID=" + hex(text) + ", nMaxCount=16",
                         "leave with nResult=" + std::to_string(result)}));
        return result;
    };
    const bool hasOne = GetParam().model->hasScreen;
    EXPECT_EQ(m_object->DeviceQueries().GetDeviceSecureID(text, sizeof text), hasOne ? 0 : -1);
    EXPECT_EQ(ask(), hasOne ? 0 : -1);
    EXPECT_STREQ(text, hasOne ? "S-0042" : "untouched");
    {
        const CLiveObject::CEnding ending(*m_object);
        m_object->Shutdown();
    }
    EXPECT_EQ(ask(), -1);
}

// Whoever comes when the object is closed is not counted: the end waits for those who were inside, and for
// nobody else.
TEST_P(SignObject, EndsThoughSomebodyWhoCameTooLateStays)
{
    m_simulator.close();
    std::atomic<bool> inside = false;
    std::atomic<bool> leaves = false;
    std::atomic<bool> ended = false;
    std::thread user([&] {
        const auto use = CLiveObject::Enter(m_object->Identity().m_Model);
        inside = true;
        while (!leaves)
            std::this_thread::yield();
    });
    EXPECT_TRUE(waitUntil([&] { return inside.load(); }));
    std::thread ender([&] {
        const CLiveObject::CEnding ending(*m_object);
        m_object->Shutdown();
        ended = true;
    });
    const CPadModel& model = m_object->Identity().m_Model;
    while (CLiveObject::Enter(model))
        std::this_thread::yield();
    const auto late = CLiveObject::Enter(model);
    EXPECT_FALSE(late);
    EXPECT_FALSE(ended);
    leaves = true;
    EXPECT_TRUE(waitUntil([&] { return ended.load(); }));
    user.join();
    ender.join();
}

INSTANTIATE_TEST_SUITE_P(, SignObject, testing::ValuesIn(casesOf(Kind::Windowless)), caseName);

// A host never meets such an object, but its driver may call one while it is being connected.
class SignObjectWithoutPad : public testing::TestWithParam<PadCase>
{
};

TEST_P(SignObjectWithoutPad, HasNothingAndTakesNothing)
{
    const std::unique_ptr<CSignObj> object = makeObject(*GetParam().model);
    ASSERT_NE(object, nullptr);
    for (const ScrSimSample& sample : wave(*GetParam().model, 5))
        object->RxSignPadRawData(sample.x, sample.y, sample.pressure, sample.penStatus);
    Bytes print = ridges(1);
    object->RxSignPadFPRawData(print.data(), static_cast<int>(print.size()), 1);

    unsigned char connected = 0xee;
    EXPECT_EQ(object->DeviceQueries().GetDeviceInfo(DIID_GET_STATUS, &connected), ARI_SUCCESS);
    EXPECT_EQ(connected, 0);
    EXPECT_EQ(object->PointQueries().GetTotalInkPointsNumber(), -8);
    _PACKETS point{};
    EXPECT_EQ(object->PointQueries().GetPACKETS(point), -1);
    EXPECT_EQ(object->PointQueries().GetInkPointTime(0), nullptr);
    EXPECT_EQ(object->Export().Base64Encode(EBITI_INK), nullptr);
    EXPECT_EQ(object->Export().Base64EncodeEx(EBITI_PNG, true), nullptr);
    EXPECT_EQ(object->Export().GetSVGImageBase64Data(), nullptr);
    wchar_t path[] = L"nothing.bmp";
    EXPECT_EQ(object->Export().SaveDrawingImage(EBITI_BITMAP, path, 300), -8);
    EXPECT_EQ(object->Export().Base64Decode(EBITI_INK, "AA==", nullptr),
              0); // needs no pad, and holds no point
    EXPECT_EQ(object->Export().GetTotalDecodeInkPointsNumber(), -8);
    EXPECT_EQ(object->Export().GetDecodePACKETS(0, INKDATATYPE_X), -8);
    EXPECT_EQ(object->ClearDeviceContent(), -1);
    EXPECT_EQ(object->SetDevicePenStyle(false), -1);
    if (!GetParam().model->hasFingerprint) {
        EXPECT_EQ(object->SetDisplayedFPImageAt({}), -1);
        EXPECT_EQ(object->GetFPImageBase64Data(EBITI_PNG, true), nullptr);
    }
    object->Shutdown();
}

INSTANTIATE_TEST_SUITE_P(, SignObjectWithoutPad, testing::ValuesIn(casesOf(Kind::Windowless)), caseName);

} // namespace
} // namespace scribera::test
