// Base64 texts of gigabytes, which cost address space and hardly any memory.

#include <climits>
#include <cstring>

#include <sys/mman.h>
#include <unistd.h>

#include "pen.h"

namespace scribera::test {
namespace {

// Begins and ends as told; between that lie characters that belong to no Base64 alphabet, all of them in the
// same page of memory.
class LongText
{
public:
    LongText(std::size_t size, const std::string& head, const std::string& tail)
        : m_space(size / Unit * Unit + 2 * Unit)
    {
        const int unit = memfd_create("filler", MFD_CLOEXEC);
        const std::string filler(Unit, '!');
        EXPECT_EQ(write(unit, filler.data(), Unit), static_cast<ssize_t>(Unit));
        m_text = static_cast<char*>(mmap(nullptr, m_space, PROT_READ | PROT_WRITE,
                                         MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0));
        EXPECT_NE(m_text, MAP_FAILED);
        for (std::size_t at = 0; at < size / Unit * Unit; at += Unit)
            EXPECT_NE(mmap(m_text + at, Unit, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_FIXED, unit, 0),
                      MAP_FAILED);
        close(unit);
        std::memset(m_text + size / Unit * Unit, '!', size % Unit);
        std::memcpy(m_text, head.data(), head.size());
        std::memcpy(m_text + size - tail.size(), tail.data(), tail.size());
    }
    ~LongText() { munmap(m_text, m_space); }
    LongText(const LongText&) = delete;
    LongText& operator=(const LongText&) = delete;

    const char* text() const { return m_text; }

private:
    static constexpr std::size_t Unit = 1 << 20;

    std::size_t m_space;
    char* m_text = nullptr;
};

// Three times the first size does not fit into 32 bits with a sign; three times the second one is eight in 32
// bits.
constexpr std::size_t longSizes[] = {715827884, 1431655768};

class LongTexts : public OpenPadTest
{
};

TEST_P(LongTexts, GiveAllTheirPoints)
{
    // More than what a buffer of a wrapped size takes without notice.
    constexpr int zeros = 100000;
    const std::string head(zeros * 32, 'A');
    StreamRecord last;
    last.x = 7;
    last.y = -8;
    last.status = 1;
    const std::string tail = streamOf({last}).toBase64().toStdString();
    for (const std::size_t size : longSizes) {
        SCOPED_TRACE(size);
        const LongText text(size, head, tail);
        ASSERT_EQ(api().Base64Decode(type(), ImageInk, text.text(), nullptr), 0);
        ASSERT_EQ(api().GetTotalDecodePacketsNumber(type()), zeros + 1);
        EXPECT_EQ(api().GetDecodePacketsData(type(), zeros - 1, 1), 0);
        EXPECT_EQ(api().GetDecodePacketsData(type(), zeros, 1), 7);
        EXPECT_EQ(api().GetDecodePacketsData(type(), zeros, 2), -8);
        EXPECT_EQ(api().GetDecodePacketsData(type(), zeros, 3), 1);
    }
}

TEST_P(LongTexts, GiveTheirPicture)
{
    pad().draw(wave(model(), 30));
    const QImage canvas = pad().canvas();
    const std::string picture = takeImage(pad(), ImageBmp).text;
    const LongText text(INT_MAX, picture.substr(0, picture.size() / 2), picture.substr(picture.size() / 2));
    std::wstring path = L"long.bmp";
    ASSERT_EQ(api().Base64Decode(type(), ImageBmp, text.text(), path.data()), 0);
    EXPECT_TRUE(sameColors(loaded("long.bmp"), canvas));
}

TEST_P(LongTexts, LongerThanAnyThatIsWrittenAreRefused)
{
    const std::string stream = streamOf({StreamRecord()}).toBase64().toStdString();
    for (const std::size_t size : {std::size_t{INT_MAX} + 1, std::size_t{UINT_MAX} + 2 * stream.size()}) {
        SCOPED_TRACE(size);
        const LongText text(size, stream, stream);
        ASSERT_EQ(decode(pad(), ImageInk, stream, ""), 0);
        EXPECT_EQ(api().Base64Decode(type(), ImageInk, text.text(), nullptr), -8);
        EXPECT_EQ(api().GetTotalDecodePacketsNumber(type()), -8) << "the list is emptied by every decode";
    }
}

INSTANTIATE_TEST_SUITE_P(, LongTexts, testing::Values(allCases().front()), caseName);

} // namespace
} // namespace scribera::test
