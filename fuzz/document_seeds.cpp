#include "document_seeds.h"

#include "document_signing.h"
#include "sealed_ink.h"
#include "signer.h"

#include <openssl/ec.h>
#include <openssl/pem.h>
#include <openssl/pkcs12.h>
#include <qpdf/Buffer.hh>
#include <qpdf/QPDFWriter.hh>

#include <cstdio>
#include <optional>
#include <stdexcept>
#include <vector>

namespace {

using namespace sign;

using Objects = std::map<int, std::string>;

std::string text(const char* form, long number, int other = 0)
{
    char line[64];
    std::snprintf(line, sizeof line, form, number, other);
    return line;
}

std::string stream(const std::string& data, const std::string& entries = {})
{
    return "<< " + entries + "/Length " + std::to_string(data.size()) + " >>\nstream\n" + data +
           "\nendstream";
}

std::string object(int number, const std::string& content)
{
    return std::to_string(number) + " 0 obj\n" + content + "\nendobj\n";
}

std::string end(std::size_t table)
{
    return "startxref\n" + std::to_string(table) + "\n%%EOF\n";
}

std::string withTable(const Objects& objects, int root = 1)
{
    std::string file = "%PDF-1.7\n";
    std::string table = "xref\n0 " + std::to_string(objects.size() + 1) + "\n0000000000 65535 f \n";
    for (const auto& [number, content] : objects) {
        table += text("%010ld %05d n \n", static_cast<long>(file.size()));
        file += object(number, content);
    }
    const std::size_t at = file.size();
    return file + table + "trailer << /Size " + std::to_string(objects.size() + 1) + " /Root " +
           std::to_string(root) + " 0 R >>\n" + end(at);
}

// The nested ones are in an object stream.
std::string withTableStream(const Objects& objects, const std::vector<int>& nested)
{
    std::string file = "%PDF-1.7\n";
    std::map<int, std::string> rows{{0, "00000000ff"}};
    const auto put = [&](int number, const std::string& content) {
        rows[number] = text("01%06lx%02x", static_cast<long>(file.size()));
        file += object(number, content);
    };
    int next = static_cast<int>(objects.size()) + 1;
    std::string places;
    std::string contents;
    int index = 0;
    for (const int number : nested) {
        rows[number] = text("02%06lx%02x", next, index++);
        places += std::to_string(number) + ' ' + std::to_string(contents.size()) + ' ';
        contents += objects.at(number) + ' ';
    }
    for (const auto& [number, content] : objects)
        if (!rows.contains(number))
            put(number, content);
    if (!nested.empty())
        put(next++, stream(places + contents, "/Type /ObjStm /N " + std::to_string(nested.size()) +
                                                  " /First " + std::to_string(places.size()) + ' '));
    const std::size_t at = file.size();
    rows[next] = text("01%06lx%02x", static_cast<long>(at));
    std::string table;
    for (const auto& [number, row] : rows)
        table += row;
    return file +
           object(next,
                  stream(table + '>', "/Type /XRef /W [1 3 1] /Root 1 0 R /Filter /ASCIIHexDecode /Size " +
                                          std::to_string(next + 1) + ' ')) +
           end(at);
}

std::string encrypted(const std::string& plain)
{
    const std::shared_ptr<QPDF> file = QPDF::create();
    file->processMemoryFile("plain", plain.data(), plain.size());
    QPDFWriter writer(*file);
    writer.setOutputMemory();
    writer.setR6EncryptionParameters("", "owner", true, true, true, true, true, true, qpdf_r3p_full, true);
    writer.write();
    const std::shared_ptr<Buffer> buffer = writer.getBufferSharedPointer();
    return {reinterpret_cast<const char*>(buffer->getBuffer()), buffer->getSize()};
}

// A key of the moment with its certificate.
struct Person
{
    std::unique_ptr<Signer> signer;
    std::string certificate; // PEM
};

Person somebody()
{
    const Owned<EVP_PKEY> key(EVP_EC_gen("P-256"));
    const Owned<X509> certificate(X509_new());
    X509_NAME* const name = X509_get_subject_name(certificate.get());
    const bool isMade = X509_set_version(certificate.get(), 2) &&
                        ASN1_INTEGER_set(X509_get_serialNumber(certificate.get()), 1) &&
                        X509_gmtime_adj(X509_getm_notBefore(certificate.get()), 0) &&
                        X509_time_adj_ex(X509_getm_notAfter(certificate.get()), 36500, 0, nullptr) &&
                        X509_NAME_add_entry_by_txt(name, "CN", MBSTRING_ASC,
                                                   reinterpret_cast<const unsigned char*>("A"), -1, -1, 0) &&
                        X509_set_issuer_name(certificate.get(), name) &&
                        X509_set_pubkey(certificate.get(), key.get()) &&
                        X509_sign(certificate.get(), key.get(), EVP_sha256());
    PKCS12* const container =
        isMade ? PKCS12_create("", nullptr, key.get(), certificate.get(), nullptr, 0, 0, 0, 0, 0) : nullptr;
    const Owned<BIO> file(BIO_new(BIO_s_mem()));
    const Owned<BIO> pem(BIO_new(BIO_s_mem()));
    if (!container || !i2d_PKCS12_bio(file.get(), container) ||
        !PEM_write_bio_X509(pem.get(), certificate.get()))
        throw std::runtime_error("no key for the documents");
    PKCS12_free(container);
    return {std::make_unique<Signer>(contentOf(file.get()), Secret()), contentOf(pem.get())};
}

std::string signedBy(const Person* person, const std::string& bytes, const Spot& spot, const Person* reader)
{
    Document document(bytes, "");
    DocumentSigning signing(document, spot, person != nullptr, 0.6, {});
    Ink ink;
    ink.segments = {{10, 10, 500, 300, 3}};
    ink.areaWidth = 660;
    ink.areaHeight = 400;
    std::optional<Seal> seal;
    if (person)
        seal = {person->signer->reservedSize(),
                [&](const std::vector<std::string_view>& parts) { return person->signer->sign(parts); }};
    InkSealing sealing;
    if (reader)
        sealing = [&](std::string_view before) { return sealInk("AA==", before, reader->certificate); };
    return bytes + signing.revision(ink, {"A", "B", "", 1'700'000'000}, seal, sealing);
}

Objects with(Objects objects, const Objects& others)
{
    for (const auto& [number, content] : others)
        objects[number] = content;
    return objects;
}

} // namespace

std::map<std::string, std::string> documentSeeds()
{
    const Objects page = {
        {1, "<< /Type /Catalog /Pages 2 0 R >>"},
        {2, "<< /Type /Pages /Kids [3 0 R] /Count 1 >>"},
        {3, "<< /Type /Page /Parent 2 0 R /MediaBox [0 0 300 300] /Contents 4 0 R "
            "/Resources << /Font << /F1 5 0 R >> >> >>"},
        {4, stream("BT /F1 12 Tf 40 100 Td (Signature:) Tj 0 -20 Td [(Na) -30 (me)] TJ ET")},
        {5, "<< /Type /Font /Subtype /Type1 /BaseFont /Helvetica >>"},
    };
    const Objects field =
        with(page, {{1, "<< /Type /Catalog /Pages 2 0 R /AcroForm << /Fields [6 0 R] /SigFlags 1 >> >>"},
                    {3, "<< /Type /Page /Parent 2 0 R /MediaBox [0 0 300 300] /Annots [6 0 R] >>"},
                    {6, "<< /Type /Annot /Subtype /Widget /FT /Sig /T (Here) /Rect [20 20 220 90] /P 3 0 R "
                        "/Lock << /Type /SigFieldLock /Action /All >> >>"}});
    const Objects limited =
        with(field, {{6, "<< /Type /Annot /Subtype /Widget /FT /Sig /T (Here) /Rect [20 20 220 90] /P 3 0 R "
                         "/Lock << /Type /SigFieldLock /Action /Include /Fields [(There)] /P 3 >> >>"}});
    const Person person = somebody();
    const Spot corner{"", "", 1, {20, 20, 100, 0}};

    std::map<std::string, std::string> seeds;
    seeds["plain"] = withTable(page);
    seeds["turned"] =
        withTable(with(page, {{3, "<< /Type /Page /Parent 2 0 R /MediaBox [0 0 300 300] /Rotate 90 "
                                  "/CropBox [10 20 290 250] /UserUnit 2 /Annots [] >>"}}));
    seeds["field"] = withTable(field);
    seeds["kids"] = withTable(
        with(page, {{1, "<< /Type /Catalog /Pages 2 0 R /AcroForm 8 0 R >>"},
                    {3, "<< /Type /Page /Parent 2 0 R /MediaBox [0 0 300 300] /Annots 9 0 R >>"},
                    {6, "<< /FT /Sig /T (Form) /Kids [7 0 R] >>"},
                    {7, "<< /Type /Annot /Subtype /Widget /Parent 6 0 R /T (Here) /Rect [20 20 220 90] >>"},
                    {8, "<< /Fields 10 0 R >>"},
                    {9, "[7 0 R]"},
                    {10, "[6 0 R]"}}));
    seeds["certified"] = withTable(
        with(page, {{1, "<< /Type /Catalog /Pages 2 0 R /Perms << /DocMDP 6 0 R >> "
                        "/AcroForm << /Fields [7 0 R] >> >>"},
                    {6, "<< /Type /Sig /Filter /Adobe.PPKLite /SubFilter /ETSI.CAdES.detached "
                        "/M (D:20240102030405Z) /ByteRange [0 10 20 30] /Contents <3003020100> /Reference "
                        "[<< /TransformMethod /DocMDP /TransformParams << /P 1 /V /1.2 >> >>] >>"},
                    {7, "<< /FT /Sig /T (One) /V 6 0 R >>"}}));
    seeds["two-roots"] =
        withTable(with(page, {{6, "<< /Type /Catalog /Pages 2 0 R /AcroForm << /Fields [7 0 R 7 0 R] >> >>"},
                              {7, "<< /FT /Sig /Kids [7 0 R] /Parent 7 0 R >>"}}),
                  6);
    seeds["xref-stream"] = withTableStream(page, {});
    seeds["object-stream"] = withTableStream(page, {1, 2, 3, 5});
    seeds["cut"] = seeds["plain"].substr(0, 300);
    seeds["encrypted"] = encrypted(seeds["plain"]);
    seeds["signed"] = signedBy(&person, seeds["plain"], corner, &person);
    seeds["signed-twice"] = signedBy(&person, seeds["signed"], {"", "", 1, {20, 150, 100, 0}}, nullptr);
    seeds["field-signed"] = signedBy(&person, seeds["field"], {"Here", "", 0, {}}, nullptr);
    seeds["changed-later"] = signedBy(
        &person, signedBy(&person, withTable(limited), {"Here", "", 0, {}}, nullptr), corner, nullptr);
    seeds["behind-text"] =
        signedBy(&person, seeds["object-stream"], {"", "Signature:", 0, {0, 0, 100, 0}}, nullptr);
    seeds["encrypted-signed"] = signedBy(&person, seeds["encrypted"], corner, &person);
    seeds["marked"] = signedBy(nullptr, seeds["plain"], corner, &person);
    seeds["appended"] = seeds["signed"] + "% more\n";
    seeds["other-signature"] = seeds["signed"];
    char& digit = seeds["other-signature"][seeds["signed"].rfind("/Contents <") + 200];
    digit = digit == '0' ? '1' : '0';
    return seeds;
}
