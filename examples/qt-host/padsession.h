// The one place that talks to the SDK.
#pragma once

#include <scriberasdk.h>

#include <QColor>
#include <QObject>
#include <QPointF>
#include <QRect>
#include <QStringList>

#include <mutex>
#include <vector>

struct PadFamily;

struct PenSettings
{
    int width = 2;
    QColor color = Qt::black;
    bool pressure = true;
};

struct ExportSettings
{
    int imageType = EBITI_PNG;
    int dpi = 300;
    bool clip = true;
    QSize margins{12, 12};
};

// A pad from open() to close(). Lives on the GUI thread; its signals come from there too.
class PadSession : public QObject
{
    Q_OBJECT

public:
    ~PadSession() override { close(); }

    static QStringList models();
    static QString suffix(int imageType); // "png"

    // Puts the library's signing canvas into the parent. The driver is looked for in the current folder.
    bool open(const QString& model, QWidget* parent, const QRect& place);
    void close();
    bool isOpen() const { return m_family; }
    static bool driverIsThere();

    QWidget* canvas() const; // null when no pad is open, or when its parent took it along
    QSize writingArea() const;

    bool apply(const PenSettings& pen);
    bool clear();
    int points() const;

    bool save(const ExportSettings& settings, const QString& path) const;
    QByteArray base64(const ExportSettings& settings) const; // empty when there is nothing to encode
    QByteArray inkText() const;
    QStringList saveEverything(const QString& folder, ExportSettings settings) const; // what did not succeed

    bool hasFingerprintReader() const;
    // In the canvas when parent is the canvas's own parent, else in a widget that covers the parent.
    bool placeFingerprint(QWidget* parent, const QRect& place);
    QByteArray fingerprintPng() const; // empty when no finger was read

signals:
    void pointStored(QPointF place, double pressure, bool onPad); // 0 to 1 each
    void confirmed();
    void cancelled();

private:
    // What a callback brings. Points and keys share one queue, so that they keep their order.
    struct News
    {
        int key = -1; // a point, when negative
        QPointF place{};
        double pressure = 0;
        bool onPad = false;
    };
    static void onKey(int status) noexcept;
    static void onPoint(unsigned long position, long pen) noexcept;
    void post(const News& news);
    Q_INVOKABLE void takeNews();
    int information(int index, int number) const;

    const PadFamily* m_family = nullptr;
    int m_highestPressure = 1;
    std::mutex m_newsMutex;   // the library's threads add news, the GUI thread takes them
    std::vector<News> m_news; // under the mutex
};

bool writeFile(const QString& path, const QByteArray& content);
