// A signature in the making, and the files that it becomes.
#pragma once

#include "leftovers.h"
#include "session.h"
#include "strokes.h"
#include "targetfile.h"

#include <QByteArray>
#include <QStringList>

#include <functional>
#include <mutex>
#include <string>
#include <vector>

// How pictures are made.
struct Look
{
    int dotsPerInch = 300;
    bool clip = false;
    bool transparent = false;
};

// The kinds of files, for messages.
QString kindsOfFiles();

// The files to be made of one signature.
class SignatureFiles
{
public:
    // Throws UsageError for a suffix without a kind, Failure for a file that cannot be written.
    SignatureFiles(const QStringList& paths, const Look& look);

    // Takes everything from the pad into memory. Any thread, also in a callback. What goes wrong is kept for
    // write(). False when the pen has written meanwhile, so that what was taken may be of several moments.
    bool take(const Session& session) noexcept;

    // Once the pad is closed. Throws Failure, also when something could not be taken.
    void write() const;

private:
    struct File
    {
        TargetFile target;
        int type;
        std::string draft; // where the library saves it
        QByteArray content;
    };
    QByteArray contentOf(const Session& session, const File& file) const;

    Look m_look;
    PrivateFolder m_folder;
    std::mutex m_taking;       // held while something is taken, which changes what follows
    std::vector<File> m_files; // but their contents, as made
    QString m_fault;
};

// Takes what is on the pad into memory. Any thread, also in a callback; throws nothing. False when the pen
// has written meanwhile, so that what was taken may be of several moments.
using Taking = std::function<bool(const Session& session)>;

// From the open pad to the decision of the person.
class Signing
{
public:
    enum class State
    {
        Going,
        Confirmed,
        Cancelled
    };

    Signing(Session& session, const Taking& take) : m_session(session), m_take(take) {}

    // Takes in what has happened at the pad.
    State proceed();
    // From here, when the pen is lifted.
    void confirm() { m_isConfirming = true; }
    // Makes the canvas white.
    void clear();

    const Strokes& strokes() const { return m_strokes; }

private:
    Session& m_session;
    const Taking& m_take;
    Strokes m_strokes;
    bool m_isConfirming = false;
};
