#include "signature.h"

#include "failures.h"
#include "text.h"

#include <scriberasdk.h>

#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <exception>
#include <iterator>

namespace {

constexpr int clipMargin = 10; // pixels around the ink

struct Kind
{
    const char* suffix;
    int type;
};

constexpr Kind kinds[] = {
    {"png", EBITI_PNG}, {"jpg", EBITI_JPG}, {"jpeg", EBITI_JPG}, {"bmp", EBITI_BITMAP},
    {"pdf", EBITI_PDF}, {"svg", EBITI_SVG}, {"ink", EBITI_INK},  {"txt", EBITI_INK},
};

int typeOf(const QString& path)
{
    const QString suffix = QFileInfo(path).suffix().toLower();
    const auto* const kind = std::find_if(std::begin(kinds), std::end(kinds), [&](const Kind& row) {
        return suffix == QLatin1String(row.suffix);
    });
    if (kind == std::end(kinds))
        throw UsageError{Text::tr("%1 has none of the suffixes %2").arg(path, kindsOfFiles())};
    return kind->type;
}

// A PDF tells nothing of a full disk, but then it has no end.
bool isWhole(int type, const QByteArray& content)
{
    return !content.isEmpty() && (type != EBITI_PDF || content.trimmed().endsWith("%%EOF"));
}

} // namespace

QString kindsOfFiles()
{
    QStringList suffixes;
    for (const Kind& kind : kinds)
        suffixes += QLatin1Char('.') + QLatin1String(kind.suffix);
    return suffixes.join(QStringLiteral(", "));
}

SignatureFiles::SignatureFiles(const QStringList& paths, const Look& look) : m_look(look)
{
    for (const QString& path : paths) {
        const int type = typeOf(path);
        std::string name = std::to_string(m_files.size()) + '.';
        name += QFileInfo(path).suffix().toLower().toStdString();
        m_files.push_back({TargetFile(path), type, m_folder.file(name), {}});
    }
}

QByteArray SignatureFiles::contentOf(const Session& session, const File& file) const
{
    if (file.type == EBITI_INK)
        return session.ink() + '\n';
    // The suffix decides about the format; only this type makes white transparent.
    const int type = file.type == EBITI_PNG && !m_look.transparent ? EBITI_BITMAP : file.type;
    const QSize margins = m_look.clip ? QSize(clipMargin, clipMargin) : QSize(0, 0);
    QFile draft(QFile::decodeName(file.draft.c_str()));
    if (!session.save(type, file.draft, m_look.dotsPerInch, margins) || !draft.open(QIODevice::ReadOnly))
        return {};
    return draft.readAll();
}

bool SignatureFiles::take(const Session& session) noexcept
{
    const std::lock_guard guard(m_taking);
    try {
        m_fault.clear();
        const int points = session.points();
        for (File& file : m_files) {
            file.content = contentOf(session, file);
            QFile::remove(QFile::decodeName(file.draft.c_str())); // must not pass for the next one
            if (!isWhole(file.type, file.content))
                m_fault = Text::tr("%1: cannot be made: is the disk full, or the picture too large?")
                              .arg(file.target.path());
        }
        return session.points() == points;
    } catch (const std::exception& error) {
        m_fault = QString::fromLocal8Bit(error.what());
        return true;
    }
}

void SignatureFiles::write() const
{
    if (!m_fault.isEmpty())
        throw Failure{m_fault};
    for (const File& file : m_files)
        file.target.write(file.content);
}

Signing::State Signing::proceed()
{
    using What = PadEvent::What;
    for (const PadEvent& event : m_session.takeEvents()) {
        m_strokes.take(event);
        if (event.what == What::KeyUsed)
            return event.isConfirm ? State::Confirmed : State::Cancelled;
    }
    // The pen may come down while everything is taken: then once more, with what it has written.
    if (!m_isConfirming || m_strokes.isPenDown())
        return State::Going;
    return !m_strokes.hasInk() || m_take(m_session) ? State::Confirmed : State::Going;
}

void Signing::clear()
{
    m_session.takeEvents();
    m_session.clear();
    m_strokes = {};
}
