// A PDF document: the input is listed, verified, and signed as far as it can be.

#include "document_signing.h"
#include "fuzzer.h"
#include "refusal.h"
#include "verifier.h"

#include <exception>
#include <optional>
#include <string>
#include <string_view>

namespace {

using namespace sign;

std::vector<SignatureReport> reportsOf(Document& document)
{
    std::vector<SignatureReport> reports = verifySignatures(document, {});
    std::size_t end = 0;
    for (const SignatureReport& report : reports) {
        require(report.end >= end && report.end <= document.bytes().size(), "coverage is within the file");
        end = report.end;
        require(report.isWholeFile == (report.end == document.bytes().size()), "the whole file is all of it");
        require(!report.fault.empty() || !report.signer.empty(), "what is valid is somebody's");
    }
    require(verdictOn(reports).kind != Verdict::Kind::AsSigned || end == document.bytes().size(),
            "what is as it was signed ends with the file");
    return reports;
}

std::size_t validOnes(const std::vector<SignatureReport>& reports)
{
    std::size_t count = 0;
    for (const SignatureReport& report : reports)
        count += report.fault.empty() ? 1 : 0;
    return count;
}

std::string signedBy(Document& document, const Spot& spot, bool isSealed)
{
    constexpr std::size_t reservedSize = 64;
    DocumentSigning signing(document, spot, isSealed, 0.6, {"A line"});
    Ink ink;
    ink.segments = {{10, 10, 500, 300, 3}, {500, 300, 510, 310, 1}};
    ink.areaWidth = 660;
    ink.areaHeight = 400;
    std::optional<Seal> seal;
    if (isSealed)
        seal = {reservedSize, [&](const std::vector<std::string_view>& parts) {
                    require(!parts.empty() && parts.front().starts_with(document.bytes()),
                            "all of the document is signed");
                    return std::string("0signature");
                }};
    return signing.revision(ink, {"Name", "Reason", "", 0}, seal,
                            [](std::string_view) { return std::string("sealed"); });
}

void checkSigned(Document& document, const Spot& spot, bool isSealed, std::size_t validBefore)
{
    std::string more;
    try {
        more = signedBy(document, spot, isSealed);
    } catch (const Refusal& refusal) {
        require(!refusal.reason.empty(), "a refusal has a reason");
        return;
    }
    const std::string whole = std::string(document.bytes()) + more;
    try {
        Document again(whole, {});
        require(validOnes(reportsOf(again)) <= validBefore, "no signature becomes valid by another");
    } catch (const Refusal&) {
        // Objects may be defined several times; the program looks before it writes.
    }
}

} // namespace

int LLVMFuzzerInitialize(int*, char***)
{
    return 0;
}

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string_view bytes(reinterpret_cast<const char*>(data), size);
    try {
        Document document(bytes, {});
        const std::size_t valid = validOnes(reportsOf(document));
        try {
            const SealedInk ink = sealedInkOf(document, {});
            require(ink.offset < size, "sealed ink is in the file");
        } catch (const Refusal& refusal) {
            require(!refusal.reason.empty(), "a refusal has a reason");
        }
        const Place corner{20, 30, 100, 0};
        checkSigned(document, {"", "", 1, corner}, true, valid);
        checkSigned(document, {"", "", 1, corner}, false, valid);
        checkSigned(document, {"", "Signature:", 0, corner}, true, valid);
        for (const SignatureField& field : document.signatureFields())
            checkSigned(document, {field.name, "", 0, {}}, true, valid);
    } catch (const Refusal& refusal) {
        require(!refusal.reason.empty(), "a refusal has a reason");
    } catch (const std::bad_alloc&) {
        throw;
    } catch (const std::exception& error) { // of what reads the document
        require(error.what()[0] != '\0', "an error has a reason");
    }
    return 0;
}
