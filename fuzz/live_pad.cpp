#include "live_pad.h"

#include "fuzzer.h"

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <string>
#include <system_error>

namespace {

namespace fs = std::filesystem;

fs::path g_directory;

fs::path decodedFile()
{
    return g_directory / "decoded";
}

void stopPad()
{
    SCK210_UnInitialDevice(SCK210_DEVICE);
    std::error_code ignored;
    fs::remove_all(g_directory, ignored);
}

int valueAt(int index, int typeId)
{
    return SCK210_GetDecodePacketsData(SCK210_DEVICE, index, typeId);
}

int littleEndian(const char* bytes)
{
    const auto low = static_cast<std::uint8_t>(bytes[0]);
    const auto high = static_cast<std::uint8_t>(bytes[1]);
    return static_cast<std::int16_t>(low | high << 8);
}

} // namespace

void startPad()
{
    std::string name = (fs::temp_directory_path() / "scribera-fuzz.XXXXXX").string();
    require(mkdtemp(name.data()) != nullptr, "there is a temporary directory");
    g_directory = name;
    fs::create_symlink(SCRIBERA_DRIVER_LIBRARY, g_directory / "libscriberadrv.so");
    const fs::path before = fs::current_path();
    fs::current_path(g_directory);
    require(SCK210_InitialDevice(SCK210_DEVICE, nullptr, 0, 0, 64, 32), "the pad starts");
    fs::current_path(before);
    std::atexit(stopPad);
}

int decode(int imageTypeId, const QByteArray& text)
{
    std::error_code missing;
    fs::remove(decodedFile(), missing);
    std::wstring path = decodedFile().wstring();
    return SCK210_Base64Decode(SCK210_DEVICE, imageTypeId, text.constData(), path.data());
}

bool hasDecodedFile()
{
    std::error_code missing;
    const std::uintmax_t size = fs::file_size(decodedFile(), missing);
    return !missing && size > 0;
}

void requireDecodedPoints(const QByteArray& stream)
{
    constexpr int RecordSize = 24;
    const int count = stream.size() / RecordSize;
    require(SCK210_GetTotalDecodePacketsNumber(SCK210_DEVICE) == (count > 0 ? count : -8),
            "every whole record is a point");
    for (int index = 0; index < count; ++index) {
        const char* const record = stream.constData() + std::ptrdiff_t{index} * RecordSize;
        require(valueAt(index, INKDATATYPE_X) == littleEndian(record), "x is that of the record");
        require(valueAt(index, INKDATATYPE_Y) == littleEndian(record + 2), "y is that of the record");
        require(valueAt(index, INKDATATYPE_STROKEEND) == static_cast<std::uint8_t>(record[6]),
                "the status is that of the record");
    }
    require(valueAt(count, INKDATATYPE_X) == (count > 0 ? ARI_INVALID_PARAMETERS : -8),
            "nothing follows the last point");
}
