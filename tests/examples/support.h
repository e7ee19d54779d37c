// What the tests of the example hosts share: a folder with a pad in it, a host as a process, what files hold.
#pragma once

#include <QByteArray>
#include <QImage>
#include <QMap>
#include <QStringList>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <string>

struct Outcome
{
    int exitCode = -1; // -1 when the host did not end by itself
    std::string output;
    std::string error;
};

using Variables = QMap<QString, QString>;

// Points and strokes of a recording that a host is to receive.
struct Recorded
{
    int points = 0;
    int strokes = 0;
};

QByteArray contentOf(const QString& path);
QString recording(const char* name);
Recorded signatureIn(const QString& recordingPath);
int pointsIn(const QByteArray& inkText);

// Whether the content is what the suffix promises, with a drawing in it.
testing::AssertionResult holdsDrawing(const QByteArray& content, const QString& suffix);

// Pixels of exactly this colour.
int countOf(const QImage& image, const QRect& part, QRgb color);

// Each test has a folder of its own, with the simulated pad's driver unless it is taken away.
class HostTest : public testing::Test
{
protected:
    HostTest();
    QString path(const QString& name) const { return m_directory.filePath(name); }
    void plugIn() const;
    void unplug() const;
    void write(const QString& name, const QByteArray& content) const;
    // Runs a host in the folder; of this process's environment it sees the loader's and sanitizers' alone.
    Outcome run(const char* program, const QStringList& arguments, const Variables& variables = {}) const;

private:
    QTemporaryDir m_directory;
};
