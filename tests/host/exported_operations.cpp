#include "exported_operations.h"

#include <climits>
#include <cstdint>
#include <type_traits>

namespace scribera::test {

namespace {

char textBuffer[256];
int numberBuffer[16];
Packet packet{};
wchar_t imagePath[] = L"picture.png";
const char encoded[] = "AAAA";

void ignoreStatus(int) {}

void ignorePoint(unsigned long, long) {}

std::string hex32(const void* pointer) // as %x writes a pointer
{
    char text[16];
    std::snprintf(text, sizeof text, "%x", static_cast<unsigned>(reinterpret_cast<std::uintptr_t>(pointer)));
    return text;
}

std::string noArguments()
{
    return "";
}

std::function<std::string()> fixed(const std::string& text)
{
    return [text] { return text; };
}

// A call of the operation with these arguments behind the device type.
template <class Result, class... Wanted, class... Given>
auto calling(Result (*Operations::*operation)(int, Wanted...), Given... arguments)
{
    return [=](const Operations& api, int type) {
        if constexpr (std::is_void_v<Result>) {
            (api.*operation)(type, arguments...);
            return Outcome::nothing();
        } else {
            return Outcome((api.*operation)(type, arguments...));
        }
    };
}

std::vector<ExportedOperation> everyOperation()
{
    const Families all = Families::All;
    const Families screen = Families::WithScreen;
    const Families finger = Families::WithFingerprint;
    using K = ResultKind;

    return {
        {"InitialDevice", all, K::Initial, "", calling(&Operations::InitialDevice, nullptr, 1, -2, 30, 40),
         "Enter", fixed(", pParentWidget=0, nX=1, nY=-2, nWidth=30, nHeight=40")},
        {"InitialDeviceByWId", all, K::Initial, "",
         calling(&Operations::InitialDeviceByWId, 0, 1, -2, 30, 40), "Enter",
         fixed(", nX=1, nY=-2, nWidth=30, nHeight=40")},
        {"UnInitialDevice", all, K::UnInitial, "", calling(&Operations::UnInitialDevice), "Enter",
         noArguments},
        {"OpenLCD", screen, K::Code, "", calling(&Operations::OpenLCD, true), "Enter", fixed(", bOn=1")},
        {"Clear", all, K::Code, "", calling(&Operations::Clear), "Enter", noArguments},
        {"GetHWPenID", screen, K::Code, "", calling(&Operations::GetHWPenID, textBuffer, 64), "enter",
         [] { return ", pPenID=" + hex(textBuffer) + ", nMaxCount=64"; }},
        {"GetHWPadID", all, K::Code, "", calling(&Operations::GetHWPadID, textBuffer, 64), "Enter",
         [] { return ", pPadID=" + hex(textBuffer) + ", nMaxCount=64"; }},
        {"GetHWVersionID", all, K::Code, "", calling(&Operations::GetHWVersionID, textBuffer, 64), "Enter",
         [] { return ", pVersion=" + hex(textBuffer) + ", nMaxCount=64"; }},
        {"DisplayHWVersion", screen, K::Code, "", calling(&Operations::DisplayHWVersion, true), "Enter",
         fixed(", bOn=1")},
        {"SetPenStyle", all, K::Code, "", calling(&Operations::SetPenStyle, true), "Enter",
         fixed(", bPressureOn=1")},
        {"SetPenWidth", all, K::Code, "", calling(&Operations::SetPenWidth, 3), "Enter",
         fixed(", nPenWidth=3")},
        {"SetPenColor", all, K::Code, "", calling(&Operations::SetPenColor, 0, 10, 255), "Enter",
         fixed(", nR=0, nG=10, nB=255")},
        {"SignatureStatusCallback", all, K::Code, "",
         calling(&Operations::SignatureStatusCallback, ignoreStatus), "Enter",
         [] { return ", pStatus=" + hexOf(ignoreStatus); }},
        {"RealTimeSignatureDataCallback", all, K::Truth, "",
         calling(&Operations::RealTimeSignatureDataCallback, ignorePoint), "Enter",
         [] { return ", pfnRealTimeSignDataCallback=" + hexOf(ignorePoint); }},
        {"GetTotalPacketsNumber", all, K::InkCount, "", calling(&Operations::GetTotalPacketsNumber), "enter",
         noArguments},
        {"getPackets", all, K::Code, "", calling(&Operations::getPackets, &packet), "enter", noArguments},
        {"GetInkPointTime", all, K::Pointer, "pInkPointTime", calling(&Operations::GetInkPointTime, 0),
         "enter", fixed(", nIndex=0")},
        {"FreeInkPointTime", all, K::Nothing, "", calling(&Operations::FreeInkPointTime, nullptr), "enter",
         fixed(", pInkPointTime=0")},
        {"GetDeviceConfirmOrCancelKeyStatus", all, K::KeyStatus, "",
         calling(&Operations::GetDeviceConfirmOrCancelKeyStatus), "Enter", noArguments},
        {"SaveDrawingImage", all, K::Code, "", calling(&Operations::SaveDrawingImage, ImagePng, imagePath, 1),
         "enter", [] { return ", nImageTypeID=3, pImageFilePath=" + hex32(imagePath) + ", nDPILevel=1"; }},
        {"SetSaveCenterImageClip", all, K::Code, "", calling(&Operations::SetSaveCenterImageClip, true, 5, 6),
         "Enter", fixed(", bClipImage=1, nClipMarginX=5, nClipMarginY=6")},
        {"getDeviceInfo", all, K::Code, "", calling(&Operations::getDeviceInfo, 4, numberBuffer), "Enter",
         [] { return ", nIndex=4, pOutput=" + hex(numberBuffer); }},
        {"PacketsBase64Encode", all, K::Pointer, "pEncodeBase64Image",
         calling(&Operations::PacketsBase64Encode, ImagePng), "Enter", fixed(", nImageTypeID=3")},
        {"PacketsBase64EncodeFree", all, K::Nothing, "",
         calling(&Operations::PacketsBase64EncodeFree, nullptr), "enter", fixed(", pEncodedData=0")},
        {"PacketsBase64EncodeEx", all, K::Pointer, "pEncodeBase64Image",
         calling(&Operations::PacketsBase64EncodeEx, ImageInk, true), "Enter",
         fixed(", nImageTypeID=6, bEnableTransparentBackground=1")},
        {"PacketsBase64EncodeExFree", all, K::Nothing, "",
         calling(&Operations::PacketsBase64EncodeExFree, nullptr), "enter", fixed(", pEncodedData=0")},
        {"Base64Decode", all, K::Code, "", calling(&Operations::Base64Decode, ImageInk, encoded, imagePath),
         "enter", [] { return ", nImageTypeID=6, pImageFilePath=" + hex32(imagePath); }},
        {"GetTotalDecodePacketsNumber", all, K::DecodedCount, "",
         calling(&Operations::GetTotalDecodePacketsNumber), "Enter", noArguments},
        {"GetDecodePacketsData", all, K::Packets, "", calling(&Operations::GetDecodePacketsData, 0, 1),
         "enter", fixed(", nIndex=0, nTypeID=1")},
        {"GetSVGImageBase64Data", all, K::Pointer, "pSVGBase64Image",
         calling(&Operations::GetSVGImageBase64Data), "Enter", noArguments},
        {"FreeSVGImageBase64Data", all, K::Nothing, "", calling(&Operations::FreeSVGImageBase64Data, nullptr),
         "enter", fixed(", pEncodedData=0")},
        {"SetDisplayedFPImageAt", finger, K::Code, "",
         calling(&Operations::SetDisplayedFPImageAt, nullptr, 300, 200, 10, 20, 30, 40), "Enter",
         fixed(", pParentWidget=0, nCanvasWidth=300, nCanvasHeight=200, nFPLeft=10, nFPTop=20, nFPWidth=30, "
               "nFPHeight=40")},
        {"SetDisplayedFPImageAtByWId", finger, K::Code, "",
         calling(&Operations::SetDisplayedFPImageAtByWId, 0, 300, 200, 10, 20, 30, 40), "Enter",
         fixed(", nCanvasWidth=300, nCanvasHeight=200, nFPLeft=10, nFPTop=20, nFPWidth=30, nFPHeight=40")},
        {"GetFPImageBase64Data", finger, K::Pointer, "pFPImageBase64Data",
         [](const Operations& api, int type) {
             char* text = api.GetFPImageBase64Data(type, ImagePng, true);
             const Outcome outcome(text);
             if (text) {
                 const bool logging = loggingIsOn();
                 setLogging(false);
                 api.FreeFPImageBase64Data(type, text);
                 setLogging(logging);
             }
             return outcome;
         },
         "enter", fixed(", nImageTypeID=3, bFPImageOnly=1")},
        {"FreeFPImageBase64Data", finger, K::Nothing, "",
         calling(&Operations::FreeFPImageBase64Data, nullptr), "enter", fixed(", pFPImageBase64Data=0")},
        {"AboutBox", all, K::About, "",
         [](const Operations& api, int) {
             api.AboutBox(nullptr);
             return Outcome::nothing();
         },
         "Enter...", noArguments},
        {"AboutBoxByWId", all, K::About, "",
         [](const Operations& api, int) {
             api.AboutBoxByWId(0x7ffffff0);
             return Outcome::nothing();
         },
         "Enter...", noArguments},
        {"GetAboutInfo", all, K::About, "", calling(&Operations::GetAboutInfo, textBuffer), "Enter...",
         noArguments},
    };
}

} // namespace

std::string ExportedOperation::entryText(int deviceType) const
{
    if (kind == ResultKind::About)
        return entryBegin;
    return entryBegin + ", nDeviceType=" + std::to_string(deviceType) + arguments();
}

bool ExportedOperation::hasDeviceType() const
{
    return name != "AboutBox" && name != "AboutBoxByWId";
}

std::string ExportedOperation::wrongTypeText(const PadModel& model) const
{
    const std::string reason = std::string("(nDeviceType != ") + model.deviceName + ")";
    switch (kind) {
    case ResultKind::Initial:
        return "leave with false due to " + reason + " !";
    case ResultKind::Truth:
        return "leave false due to " + reason + " || (pfnRealTimeSignDataCallback == nullptr) !";
    case ResultKind::Pointer:
        return "leave with nullptr due to " + reason + " !";
    case ResultKind::Nothing:
    case ResultKind::About:
        return "leave due to " + reason + " !";
    default:
        // The decoder's wording is a pointer operation's, its result is not.
        return name == "Base64Decode" ? "leave with nullptr due to " + reason + " !"
                                      : "leave with ARI_INVALID_PARAMETERS due to " + reason + " !";
    }
}

std::string ExportedOperation::wrongTypeResult() const
{
    switch (kind) {
    case ResultKind::Initial:
    case ResultKind::Truth:
        return "false";
    case ResultKind::Pointer:
        return "null";
    case ResultKind::Nothing:
    case ResultKind::About:
        return "nothing";
    default:
        return "-2";
    }
}

std::string ExportedOperation::missingObjectResult() const
{
    switch (kind) {
    case ResultKind::InkCount:
    case ResultKind::DecodedCount:
        return "-8";
    case ResultKind::Pointer:
        return "null";
    case ResultKind::Truth:
        return "false";
    case ResultKind::Nothing:
        return "nothing";
    default:
        return "-1";
    }
}

std::string ExportedOperation::leaveText(const std::string& result) const
{
    const std::string truth = result == "true" ? "1" : "0";
    switch (kind) {
    case ResultKind::InkCount:
        return "leave with nInkCount=" + result + " !";
    case ResultKind::DecodedCount:
        return "leave with nDecodedInkCount=" + result + " !";
    case ResultKind::Packets:
        return "leave with nPACKETS=" + result + " !";
    case ResultKind::KeyStatus:
        return "leave with nKeyStatus=" + result + " !";
    case ResultKind::Pointer:
        return "leave with " + pointerName + "=" + (result == "null" ? "0" : result) + " !";
    case ResultKind::Truth:
        return "leave with bRet = " + truth + "...";
    case ResultKind::Initial:
        return "leave with bRet=" + truth + " !";
    case ResultKind::UnInitial:
        return "leave with ARI_SUCCESS...";
    case ResultKind::Nothing:
    case ResultKind::About:
        return "leave !";
    case ResultKind::Code:
        break;
    }
    return "leave with nResult=" + result + " !";
}

std::vector<ExportedOperation> exportedOperations(const PadModel& model)
{
    std::vector<ExportedOperation> operations;
    for (ExportedOperation& operation : everyOperation()) {
        if (belongsTo(operation.families, model))
            operations.push_back(std::move(operation));
    }
    return operations;
}

std::vector<ExportedOperation> objectOperations(const PadModel& model)
{
    std::vector<ExportedOperation> operations = exportedOperations(model);
    std::erase_if(operations, [](const ExportedOperation& operation) {
        return operation.kind == ResultKind::Initial || operation.kind == ResultKind::UnInitial ||
               operation.kind == ResultKind::About;
    });
    return operations;
}

std::vector<BadArguments> badArguments(const PadModel& model)
{
    const std::string invalid = "leave with ARI_INVALID_PARAMETERS due to ";
    const std::string imageType =
        "(nImageTypeID < EBITI_BITMAP) || ((nImageTypeID > EBITI_PNG) && (nImageTypeID != EBITI_INK)) !";
    std::vector<BadArguments> calls;

    for (const int id : {INT_MIN, -1, 0, 4, 5, 6, 9, INT_MAX}) {
        calls.push_back({"SaveDrawingImage type " + std::to_string(id), "SaveDrawingImage",
                         calling(&Operations::SaveDrawingImage, id, imagePath, 1), "-2",
                         invalid + "nImageTypeID out of range !"});
    }
    using Margins = std::pair<int, int>;
    for (const Margins& margins :
         {Margins(-1, 0), Margins(0, -1), Margins(-1, -1), Margins(INT_MIN, 5), Margins(5, INT_MIN)}) {
        calls.push_back({"margins " + std::to_string(margins.first) + ", " + std::to_string(margins.second),
                         "SetSaveCenterImageClip",
                         calling(&Operations::SetSaveCenterImageClip, true, margins.first, margins.second),
                         "-2", invalid + "(nClipMarginX < 0) || (nClipMarginY < 0) !"});
    }
    const std::string information =
        invalid + "(nIndex < DIID_GET_STATUS) || (nIndex > DIID_GET_DRV_VER) || (pOutput == nullptr) !";
    for (const int index : {INT_MIN, -1, 0, 8, INT_MAX}) {
        calls.push_back({"getDeviceInfo index " + std::to_string(index), "getDeviceInfo",
                         calling(&Operations::getDeviceInfo, index, numberBuffer), "-2", information});
    }
    calls.push_back({"getDeviceInfo without output", "getDeviceInfo",
                     calling(&Operations::getDeviceInfo, 1, nullptr), "-2", information});
    for (const int id : {INT_MIN, -1, 0, 4, INT_MAX}) {
        calls.push_back({"decoded value " + std::to_string(id), "GetDecodePacketsData",
                         calling(&Operations::GetDecodePacketsData, 0, id), "-2",
                         invalid + "(nTypeID < INKDATATYPE_X) || (nTypeID > INKDATATYPE_STROKEEND) !"});
    }
    for (const int id : {INT_MIN, -1, 0, 4, 5, 7, 8, INT_MAX}) {
        const std::string text = std::to_string(id);
        calls.push_back({"PacketsBase64Encode type " + text, "PacketsBase64Encode",
                         calling(&Operations::PacketsBase64Encode, id), "null",
                         "leave with nullptr due to " + imageType});
        calls.push_back({"PacketsBase64EncodeEx type " + text, "PacketsBase64EncodeEx",
                         calling(&Operations::PacketsBase64EncodeEx, id, false), "null",
                         "leave with nullptr due to " + imageType});
        calls.push_back({"Base64Decode type " + text, "Base64Decode",
                         calling(&Operations::Base64Decode, id, encoded, imagePath), "-2",
                         invalid + imageType});
        calls.push_back({"Base64Decode type " + text + " of nothing: the type is looked at first",
                         "Base64Decode", calling(&Operations::Base64Decode, id, nullptr, imagePath), "-2",
                         invalid + imageType});
    }
    for (const int id : {1, 2, 3, 6}) {
        for (const char* data : {static_cast<const char*>(nullptr), ""}) {
            calls.push_back(
                {"Base64Decode type " + std::to_string(id) + (data ? " of an empty text" : " of null"),
                 "Base64Decode", calling(&Operations::Base64Decode, id, data, imagePath), "-2",
                 "leave with nullptr due to (pEncodedData : null or empty) !"});
        }
    }
    calls.push_back({"RealTimeSignatureDataCallback without callback", "RealTimeSignatureDataCallback",
                     calling(&Operations::RealTimeSignatureDataCallback, nullptr), "false",
                     std::string("leave false due to (nDeviceType != ") + model.deviceName +
                         ") || (pfnRealTimeSignDataCallback == nullptr) !"});
    if (model.hasFingerprint) {
        for (const int id : {INT_MIN, -1, 0, 4, 6, 7, INT_MAX}) {
            calls.push_back(
                {"GetFPImageBase64Data type " + std::to_string(id), "GetFPImageBase64Data",
                 calling(&Operations::GetFPImageBase64Data, id, true), "null",
                 "leave with nullptr due to (nImageTypeID < EBITI_BITMAP) || (nImageTypeID > EBITI_PNG) !"});
        }
    }
    return calls;
}

} // namespace scribera::test
