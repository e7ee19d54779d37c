#include "verifier.h"

#include "crypto.h"
#include "later_changes.h"
#include "refusal.h"
#include "sealed_ink.h"
#include "texts.h"

#include <openssl/err.h>
#include <openssl/ess.h>
#include <openssl/pem.h>

#include <algorithm>
#include <array>
#include <climits>
#include <map>
#include <memory>
#include <optional>

namespace sign {

namespace {

constexpr int safeLevel = 2; // of OpenSSL's: no SHA-1 and no RSA keys below 2048 bits in a chain
constexpr std::size_t fewSignatures = 50;
constexpr std::size_t mostBytes = std::size_t{1} << 32; // that all signatures together cover

// Why something is not valid. Of one signature, unlike a Refusal.
struct Fault
{
    std::string reason;
};

bool isDigit(char c)
{
    return c >= '0' && c <= '9';
}

bool isHexDigit(char c)
{
    return isDigit(c) || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F');
}

// What is signed: all from the start of the file to its end, or that of an earlier revision, but for one gap.
struct Coverage
{
    std::size_t gap = 0;
    std::size_t afterGap = 0;
    std::size_t end = 0;

    std::vector<std::string_view> parts(std::string_view file) const
    {
        return {file.substr(0, gap), file.substr(afterGap, end - afterGap)};
    }
};

Coverage coverageOf(QPDFObjectHandle ranges, std::size_t fileSize)
{
    if (!ranges.isArray() || ranges.getArrayNItems() != 4)
        throw Fault{trText("Sign", "its /ByteRange does not name two ranges")};
    std::array<std::size_t, 4> numbers{};
    for (int i = 0; i < 4; ++i) {
        QPDFObjectHandle number = ranges.getArrayItem(i);
        if (!number.isInteger() || number.getIntValue() < 0)
            throw Fault{trText("Sign", "its /ByteRange is not made of sizes")};
        numbers[static_cast<std::size_t>(i)] = static_cast<std::size_t>(number.getIntValue());
    }
    const auto [start, gap, afterGap, rest] = numbers;
    if (start != 0)
        throw Fault{trText("Sign", "what it covers does not begin with the file")};
    if (gap >= afterGap)
        throw Fault{trText("Sign", "the ranges that it covers overlap")};
    if (afterGap > fileSize || rest > fileSize - afterGap)
        throw Fault{trText("Sign", "it covers more than there is: the file is cut off")};
    return {gap, afterGap, afterGap + rest};
}

// The gap must be the signature and nothing else, and that of this dictionary: otherwise there would be room
// for what is not signed, or one signature could stand for several dictionaries.
// It is taken from the file: in an encrypted document, qpdf decrypts what it does not know as a signature's.
std::string contentsOf(std::string_view file, const Coverage& coverage, QPDFObjectHandle contents)
{
    const std::string_view gap = file.substr(coverage.gap, coverage.afterGap - coverage.gap);
    if (gap.size() < 2 || gap.front() != '<' || gap.back() != '>' || gap.size() % 2 != 0 ||
        !std::all_of(gap.begin() + 1, gap.end() - 1, isHexDigit))
        throw Fault{trText("Sign", "what it leaves out is more than the signature")};
    if (contents.getParsedOffset() != static_cast<qpdf_offset_t>(coverage.gap))
        throw Fault{trText("Sign", "what it leaves out is another signature")};
    const auto value = [](char digit) { return digit <= '9' ? digit - '0' : (digit | 0x20) - 'a' + 10; };
    std::string bytes;
    bytes.reserve(gap.size() / 2);
    for (std::size_t place = 1; place + 1 < gap.size(); place += 2)
        bytes += static_cast<char>(value(gap[place]) << 4 | value(gap[place + 1]));
    return bytes;
}

Owned<CMS_ContentInfo> cmsOf(const std::string& contents)
{
    const auto* start = reinterpret_cast<const unsigned char*>(contents.data());
    const unsigned char* end = start;
    if (contents.size() > LONG_MAX)
        throw Fault{trText("Sign", "it is too long")};
    Owned<CMS_ContentInfo> cms(d2i_CMS_ContentInfo(nullptr, &end, static_cast<long>(contents.size())));
    if (!cms || OBJ_obj2nid(CMS_get0_type(cms.get())) != NID_pkcs7_signed)
        throw Fault{trText("Sign", "it is no CMS signature")};
    const std::string_view rest = std::string_view(contents).substr(static_cast<std::size_t>(end - start));
    if (rest.find_first_not_of('\0') != std::string_view::npos)
        throw Fault{trText("Sign", "something else stands after it in its place")};
    if (CMS_is_detached(cms.get()) != 1)
        throw Fault{trText("Sign", "it holds what it signs instead of the document's digest")};
    return cms;
}

const EVP_MD* digestAlgorithm(const X509_ALGOR* algorithm)
{
    const ASN1_OBJECT* object = nullptr;
    X509_ALGOR_get0(&object, nullptr, nullptr, algorithm);
    switch (OBJ_obj2nid(object)) {
    case NID_sha256:
        return EVP_sha256();
    case NID_sha384:
        return EVP_sha384();
    case NID_sha512:
        return EVP_sha512();
    case NID_sha3_256:
        return EVP_sha3_256();
    case NID_sha3_384:
        return EVP_sha3_384();
    case NID_sha3_512:
        return EVP_sha3_512();
    default:
        throw Fault{trText("Sign", "its digest is of a kind that is not safe or not known")};
    }
}

std::string_view bytesOf(const ASN1_STRING* text)
{
    return {reinterpret_cast<const char*>(ASN1_STRING_get0_data(text)),
            static_cast<std::size_t>(ASN1_STRING_length(text))};
}

const ASN1_STRING* signedValue(CMS_SignerInfo* signer, int attribute, int type)
{
    constexpr int theOnlyOne = -3;
    return static_cast<const ASN1_STRING*>(
        CMS_signed_get0_data_by_OBJ(signer, OBJ_nid2obj(attribute), theOnlyOne, type));
}

// The certificate is not signed itself: a statement about it is.
void checkCertificateStatement(CMS_SignerInfo* signer, X509* certificate)
{
    const ASN1_STRING* value = signedValue(signer, NID_id_smime_aa_signingCertificateV2, V_ASN1_SEQUENCE);
    if (!value)
        throw Fault{trText("Sign", "it does not say which certificate it was made with")};
    const unsigned char* bytes = ASN1_STRING_get0_data(value);
    ESS_SIGNING_CERT_V2* statement = d2i_ESS_SIGNING_CERT_V2(nullptr, &bytes, ASN1_STRING_length(value));
    STACK_OF(X509)* chain = sk_X509_new_null();
    const bool isThis = statement && chain && sk_X509_push(chain, certificate) > 0 &&
                        OSSL_ESS_check_signing_certs(nullptr, statement, chain, 1) > 0;
    sk_X509_free(chain);
    ESS_SIGNING_CERT_V2_free(statement);
    if (!isThis)
        throw Fault{trText("Sign", "it was made with another certificate than the one that it brings")};
}

bool isSignatureOver(const std::vector<std::string_view>& parts, const EVP_MD* algorithm, EVP_PKEY* key,
                     std::string_view signature)
{
    const Owned<EVP_MD_CTX> context(EVP_MD_CTX_new());
    bool isGood = context && EVP_DigestVerifyInit(context.get(), nullptr, algorithm, nullptr, key) == 1;
    for (const std::string_view part : parts)
        isGood = isGood && EVP_DigestVerifyUpdate(context.get(), part.data(), part.size()) == 1;
    return isGood &&
           EVP_DigestVerifyFinal(context.get(), reinterpret_cast<const unsigned char*>(signature.data()),
                                 signature.size()) == 1;
}

void checkSignature(CMS_SignerInfo* signer, X509* certificate, const std::vector<std::string_view>& parts,
                    bool mustNameCertificate)
{
    const auto notMatching = [] { return Fault{trText("Sign", "the document was changed after it")}; };
    EVP_PKEY* key = X509_get0_pubkey(certificate);
    if (!key)
        throw Fault{trText("Sign", "the key of its certificate cannot be read")};
    if (const std::string fault = keyFault(key); !fault.empty())
        throw Fault{fault};
    X509_ALGOR* digestKind = nullptr;
    CMS_SignerInfo_get0_algs(signer, nullptr, nullptr, &digestKind, nullptr);
    const EVP_MD* algorithm = digestAlgorithm(digestKind);
    if (CMS_signed_get_attr_count(signer) <= 0) {
        if (mustNameCertificate)
            throw Fault{trText("Sign", "it does not say which certificate it was made with")};
        if (!isSignatureOver(parts, algorithm, key, bytesOf(CMS_SignerInfo_get0_signature(signer))))
            throw notMatching();
        return;
    }
    if (CMS_SignerInfo_verify(signer) != 1)
        throw Fault{trText("Sign", "it was changed, or made with another key than its certificate's")};
    const void* type =
        CMS_signed_get0_data_by_OBJ(signer, OBJ_nid2obj(NID_pkcs9_contentType), -3, V_ASN1_OBJECT);
    if (!type || OBJ_obj2nid(static_cast<const ASN1_OBJECT*>(type)) != NID_pkcs7_data)
        throw Fault{trText("Sign", "it is not one over a document")};
    const ASN1_STRING* digest = signedValue(signer, NID_pkcs9_messageDigest, V_ASN1_OCTET_STRING);
    if (!digest || bytesOf(digest) != digestOf(algorithm, parts))
        throw notMatching();
    if (mustNameCertificate)
        checkCertificateStatement(signer, certificate);
}

// Certificates that whoever asks trusts.
class Anchors
{
public:
    explicit Anchors(std::string_view pem)
    {
        if (pem.empty())
            return;
        m_store.reset(X509_STORE_new());
        if (!m_store)
            throw std::bad_alloc();
        X509_STORE_set_flags(m_store.get(), X509_V_FLAG_PARTIAL_CHAIN);
        X509_VERIFY_PARAM_set_auth_level(X509_STORE_get0_param(m_store.get()), safeLevel);
        const Owned<BIO> bio = reader(pem);
        int count = 0;
        while (const Owned<X509> certificate{PEM_read_bio_X509(bio.get(), nullptr, nullptr, nullptr)})
            count += X509_STORE_add_cert(m_store.get(), certificate.get());
        ERR_clear_error();
        if (count == 0)
            throw Refusal{trText("Sign", "there is no certificate in PEM among what is to be trusted")};
    }

    // Empty when trusted, or when there is nothing to go by.
    std::string distrust(X509* certificate, STACK_OF(X509) * others) const
    {
        if (!m_store)
            return {};
        const Owned<X509_STORE_CTX> check(X509_STORE_CTX_new());
        if (!check || !X509_STORE_CTX_init(check.get(), m_store.get(), certificate, others))
            throw std::bad_alloc();
        if (X509_verify_cert(check.get()) != 1) {
            ERR_clear_error();
            return X509_verify_cert_error_string(X509_STORE_CTX_get_error(check.get()));
        }
        if (!maySign(certificate))
            return trText("Sign", "its certificate is not meant for signatures");
        return {};
    }

private:
    Owned<X509_STORE> m_store;
};

std::string serialOf(X509* certificate)
{
    BIGNUM* number = ASN1_INTEGER_to_BN(X509_get0_serialNumber(certificate), nullptr);
    char* digits = number ? BN_bn2hex(number) : nullptr;
    std::string text = digits ? digits : "";
    OPENSSL_free(digits);
    BN_free(number);
    return text;
}

void checkCms(const std::string& contents, const std::vector<std::string_view>& parts,
              bool mustNameCertificate, const Anchors& anchors, SignatureReport& report)
{
    const Owned<CMS_ContentInfo> cms = cmsOf(contents);
    STACK_OF(CMS_SignerInfo)* signers = CMS_get0_SignerInfos(cms.get());
    if (sk_CMS_SignerInfo_num(signers) != 1)
        throw Fault{trText("Sign", "it is not of exactly one signer")};
    CMS_set1_signers_certs(cms.get(), nullptr, 0);
    CMS_SignerInfo* signer = sk_CMS_SignerInfo_value(signers, 0);
    X509* certificate = nullptr;
    CMS_SignerInfo_get0_algs(signer, nullptr, &certificate, nullptr, nullptr);
    if (!certificate)
        throw Fault{trText("Sign", "the signer's certificate is missing")};
    report.signer = nameOf(X509_get_subject_name(certificate));
    report.issuer = nameOf(X509_get_issuer_name(certificate));
    report.serial = serialOf(certificate);
    checkSignature(signer, certificate, parts, mustNameCertificate);
    const Certificates others(CMS_get1_certs(cms.get()));
    report.distrust = anchors.distrust(certificate, others.get());
}

std::string textOf(QPDFObjectHandle dictionary, const char* key)
{
    QPDFObjectHandle value = dictionary.getKey(key);
    return value.isString() ? value.getUTF8Value() : std::string();
}

// 2024-05-06T07:08:09+02:00 from D:20240506070809+02'00', with as much as there is; empty for anything else.
std::string isoTime(const std::string& text)
{
    constexpr std::string_view separators = "--T::";
    std::size_t place = text.starts_with("D:") ? 2 : 0;
    const auto takeDigits = [&](std::size_t count) {
        std::string digits = text.substr(std::min(place, text.size()), count);
        if (digits.size() != count || !std::all_of(digits.begin(), digits.end(), isDigit))
            return std::string();
        place += count;
        return digits;
    };
    std::string iso = takeDigits(4);
    if (iso.empty())
        return {};
    for (const char separator : separators) {
        const std::string digits = takeDigits(2);
        if (digits.empty())
            return iso;
        iso += separator + digits;
    }
    const char sign = place < text.size() ? text[place++] : '\0';
    if (sign == 'Z')
        return iso + 'Z';
    if (sign != '+' && sign != '-')
        return iso;
    const std::string hours = takeDigits(2);
    if (hours.empty())
        return iso;
    if (place < text.size() && text[place] == '\'')
        ++place;
    const std::string minutes = takeDigits(2);
    return iso + sign + hours + ':' + (minutes.empty() ? "00" : minutes);
}

// That of the field itself where the signature is none of its own.
QPDFObjGen signatureObject(QPDFObjectHandle field)
{
    QPDFObjectHandle signature = field.getKey("/V");
    return (signature.isIndirect() ? signature : field).getObjGen();
}

// Where the document's objects stand, as its newest revision has it.
class Places
{
public:
    explicit Places(Document& document) : m_references(document.file().getXRefTable()) {}

    // In the file itself, below the limit.
    bool isPlain(QPDFObjGen object, std::size_t limit) const
    {
        const auto found = m_references.find(object);
        return found != m_references.end() && found->second.getType() == 1 &&
               static_cast<std::size_t>(found->second.getOffset()) < limit;
    }
    // So that no later revision has put it in the place of another.
    bool isBelow(QPDFObjGen object, std::size_t limit) const
    {
        const auto found = m_references.find(object);
        const bool isNested = found != m_references.end() && found->second.getType() == 2;
        return isPlain(isNested ? QPDFObjGen(found->second.getObjStreamNumber(), 0) : object, limit);
    }

private:
    std::map<QPDFObjGen, QPDFXRefEntry> m_references;
};

// The dictionary around the gap is the one that is read here, and what it refers to is covered. Otherwise a
// later revision could have another one speak for the signer.
void checkDictionary(const Coverage& coverage, QPDFObjGen object, QPDFObjectHandle signature,
                     const Places& places)
{
    if (!places.isPlain(object, coverage.gap) || signature.getKey("/Contents").isIndirect())
        throw Fault{trText("Sign", "what it says stands apart from it")};
    for (const char* const key : {"/ByteRange", "/M", "/Name", "/Reason", "/Location"})
        if (QPDFObjectHandle said = signature.getKey(key);
            said.isIndirect() && !places.isBelow(said.getObjGen(), coverage.end))
            throw Fault{trText("Sign", "what it says was changed after it")};
}

// What it allows is told by its own revision, where no later one can say otherwise.
void checkLaterChanges(Document& document, const Coverage& coverage, QPDFObjGen object,
                       const QPDFObjectHandle& signature, SignatureReport& report)
{
    try {
        Document before(document.bytes().substr(0, coverage.end), document.password());
        QPDFObjectHandle own = before.file().getObject(object);
        if (!signature.isIndirect())
            own = own.getKeyIfDict("/V");
        QPDFObjectHandle contents = own.getKeyIfDict("/Contents");
        if (!contents.isString() || contents.getParsedOffset() != static_cast<qpdf_offset_t>(coverage.gap))
            throw Fault{trText("Sign", "what it covers does not have it as a signature")};
        if (!areEncryptedAlike(before, document))
            throw Fault{trText("Sign", "how the document is encrypted was changed after it")};
        const Limits limits = limitsOf(own);
        report.limitsChanges = limits.areAny();
        if (const std::optional<std::string> change = forbiddenChange(before, document, limits))
            throw Fault{filled(
                limits.certified ? trText("Sign", "it certifies the document against that, but afterwards %1")
                                 : trText("Sign", "it locks fields, but afterwards %1"),
                {*change})};
    } catch (const Refusal& refusal) {
        throw Fault{
            filled(trText("Sign", "what was changed after it cannot be judged: %1"), {refusal.reason})};
    }
}

void check(Document& document, QPDFObjectHandle field, const Places& places, const Anchors& anchors,
           SignatureReport& report)
{
    const std::string_view file = document.bytes();
    QPDFObjectHandle signature = field.getKey("/V");
    if (!signature.isDictionary())
        throw Fault{trText("Sign", "it is no dictionary")};
    report.time = isoTime(textOf(signature, "/M"));
    report.name = textOf(signature, "/Name");
    report.reason = textOf(signature, "/Reason");
    report.location = textOf(signature, "/Location");
    QPDFObjectHandle kind = signature.getKey("/SubFilter");
    const bool isCades = kind.isNameAndEquals("/ETSI.CAdES.detached");
    if (!isCades && !kind.isNameAndEquals("/adbe.pkcs7.detached"))
        throw Fault{filled(trText("Sign", "it is of a kind that is not known here: %1"),
                           {kind.isName() ? kind.getName() : trText("Sign", "none named")})};
    QPDFObjectHandle contents = signature.getKey("/Contents");
    if (!contents.isString())
        throw Fault{trText("Sign", "it has no /Contents")};
    const Coverage coverage = coverageOf(signature.getKey("/ByteRange"), file.size());
    report.end = coverage.end;
    report.isWholeFile = coverage.end == file.size();
    const std::string cms = contentsOf(file, coverage, contents);
    checkDictionary(coverage, signatureObject(field), signature, places);
    checkCms(cms, coverage.parts(file), isCades, anchors, report);
    if (!report.isWholeFile)
        checkLaterChanges(document, coverage, signatureObject(field), signature, report);
}

SignatureReport reportOf(Document& document, const SignatureField& field, const Places& places,
                         const Anchors& anchors)
{
    ERR_clear_error();
    SignatureReport report;
    report.field = field.name;
    report.page = field.page;
    try {
        check(document, field.object, places, anchors, report);
    } catch (const Fault& fault) {
        report.fault = fault.reason;
    }
    return report;
}

// Bytes of the file below the limit, so that no later revision has put them in the place of others.
SealedInk sealedInkIn(QPDFObjectHandle holder, std::size_t limit)
{
    QPDFObjectHandle stream = holder.getKey(sealedInkKey);
    if (!stream.isStream() || stream.getParsedOffset() <= 0 ||
        static_cast<std::size_t>(stream.getParsedOffset()) >= limit)
        throw Refusal{trText("Sign", "the sealed ink is not within what was signed")};
    const std::shared_ptr<Buffer> data = stream.getRawStreamData();
    return {std::string(reinterpret_cast<const char*>(data->getBuffer()), data->getSize()),
            static_cast<std::size_t>(stream.getParsedOffset()),
            {}};
}

} // namespace

std::vector<SignatureReport> verifySignatures(Document& document, std::string_view trusted)
{
    const Anchors anchors(trusted);
    std::vector<SignatureField> fields = document.signatureFields();
    std::erase_if(fields, [](const SignatureField& field) { return !field.isSigned; });
    // Each may cover all of the file, and nobody waits for hours.
    if (fields.size() > fewSignatures && fields.size() > mostBytes / document.bytes().size())
        throw Refusal{trText("Sign", "it has too many signatures to verify them all")};
    const Places places(document);
    std::map<QPDFObjGen, int> owners; // of each signature
    for (const SignatureField& field : fields)
        ++owners[signatureObject(field.object)];
    std::vector<SignatureReport> reports;
    reports.reserve(fields.size());
    for (const SignatureField& field : fields) {
        reports.push_back(reportOf(document, field, places, anchors));
        if (reports.back().fault.empty() && owners[signatureObject(field.object)] > 1)
            reports.back().fault = trText("Sign", "it is in several fields");
    }
    std::stable_sort(
        reports.begin(), reports.end(),
        [](const SignatureReport& one, const SignatureReport& other) { return one.end < other.end; });
    return reports;
}

Verdict verdictOn(const std::vector<SignatureReport>& reports)
{
    using Kind = Verdict::Kind;
    if (reports.empty())
        return {Kind::NotSigned, {}};
    for (const SignatureReport& report : reports) {
        if (!report.fault.empty())
            return {Kind::NotValid, report.field};
        if (!report.distrust.empty())
            return {Kind::NotTrusted, report.field};
    }
    return {reports.back().isWholeFile ? Kind::AsSigned : Kind::Continued, {}};
}

SealedInk sealedInkOf(Document& document, const std::string& field)
{
    const Places places(document);
    std::optional<SealedInk> found;
    const auto put = [&](const QPDFObjectHandle& holder, std::size_t limit) {
        if (found)
            throw Refusal{trText("Sign", "there is sealed ink in several places; name the field")};
        found = sealedInkIn(holder, limit);
    };
    for (const SignatureField& candidate : document.signatureFields()) {
        QPDFObjectHandle signature = QPDFObjectHandle(candidate.object).getKey("/V");
        if (!candidate.isSigned || !signature.hasKey(sealedInkKey) ||
            (!field.empty() && candidate.name != field))
            continue;
        const SignatureReport report = reportOf(document, candidate, places, Anchors({}));
        if (!report.fault.empty())
            throw Refusal{
                filled(trText("Sign", "the signature %1 is not valid: %2"), {report.field, report.fault})};
        put(signature, report.end);
        found->signature = report;
    }
    for (int number = 1; field.empty() && number <= document.pageCount(); ++number) {
        QPDFObjectHandle annotations = document.page(number).object.getKey("/Annots");
        for (int i = 0; annotations.isArray() && i < annotations.getArrayNItems(); ++i)
            if (QPDFObjectHandle annotation = annotations.getArrayItem(i);
                annotation.isDictionary() && annotation.hasKey(sealedInkKey))
                put(annotation, document.bytes().size());
    }
    if (!found)
        throw Refusal{field.empty()
                          ? trText("Sign", "there is no sealed ink")
                          : filled(trText("Sign", "there is no sealed ink in the field %1"), {field})};
    return *found;
}

} // namespace sign
