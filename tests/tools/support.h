// What the tests of scribera-ink share: streams built by hand, the tool as a process.
#pragma once

#include <QByteArray>
#include <QStringList>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

struct Point
{
    int x = 0;
    int y = 0;
    int pressure = 0;
    int status = 0;
    std::int64_t tick = 0;
    std::int64_t seconds = 0;
};

// The stream before Base64.
QByteArray streamOf(const std::vector<Point>& points);

QByteArray textOf(const std::vector<Point>& points);

// Three strokes, the last of them unfinished: a line of three points, a tap, a point.
const std::vector<Point>& threeStrokes();

struct Outcome
{
    int exitCode = -1; // -1 when the tool did not end by itself
    QByteArray output;
    QByteArray error;
};

// Runs the tool with these bytes on its standard input. Without a display and with nothing of this process's
// locale.
Outcome runInk(const QStringList& arguments, const QByteArray& input = {});

// For what must succeed: the output, with a failure noted otherwise.
QByteArray outputOf(const QStringList& arguments, const QByteArray& input);

QByteArray contentOf(const QString& path);

class InkToolTest : public testing::Test
{
protected:
    QString path(const char* name) const { return m_directory.filePath(QString::fromLatin1(name)); }
    QString write(const char* name, const QByteArray& content) const;

private:
    QTemporaryDir m_directory;
};
