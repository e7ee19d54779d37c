// The one place that talks to the SDK.
#pragma once

#include "signature.h"

#include <QColor>
#include <QObject>
#include <QPointF>
#include <QRect>
#include <QStringList>
#include <QTimer>

#include <memory>
#include <mutex>
#include <vector>

struct PadFamily;

struct PenSettings
{
    int width = 2;
    QColor color = Qt::black;
    bool pressure = true;
};

// A pad from open() to close(), for one signature. Lives on the GUI thread; its signals come from there too.
class PadSession : public QObject
{
    Q_OBJECT

public:
    PadSession();
    ~PadSession() override { close(); }

    static QStringList models();
    static bool hasFingerprintReader(const QString& model);

    // Puts the library's signing canvas into the parent. The driver is looked for in the current folder.
    bool open(const QString& model, QWidget* parent, const QSize& size);
    void close();
    bool isOpen() const { return m_family; }
    static bool driverIsThere();
    static QString whyNotOpen(); // what the library says of an open() that failed

    QWidget* canvas() const; // null when no pad is open, or when its parent took it along
    QSize writingArea() const;

    bool apply(const PenSettings& pen);
    bool clear();
    int points() const;
    QByteArray inkText() const; // empty without points
    Signature take() const;     // not whole when ink or finger came meanwhile, or a file cannot be made

    // In the canvas when parent is the canvas's own parent, else in a widget that covers the parent.
    bool placeFingerprint(QWidget* parent, const QRect& place);
    QByteArray fingerprintPng() const; // empty when no finger was read

signals:
    void pointStored(QPointF place, double pressure, bool onPad); // 0 to 1 each
    void confirmed(const Signature& signature);                   // as it was when the key was touched
    void cancelled();                                             // it is cleared already
    void wentAway();                                              // the pad does not answer any more

private:
    // What a callback brings. Points and keys share one queue, so that they keep their order.
    struct News
    {
        int key = -1; // a point, when negative
        QPointF place{};
        double pressure = 0;
        bool onPad = false;
        std::shared_ptr<const Signature> signature{}; // with the confirm key
    };
    static void onKey(int status) noexcept;
    static void onPoint(unsigned long position, long pen) noexcept;
    void post(const News& news);
    Q_INVOKABLE void takeNews();
    void watch();
    int information(int index, int number) const;
    QByteArray exported(const ExportSettings& settings, const QString& folder) const;

    const PadFamily* m_family = nullptr; // changes only while no callback can come
    QTimer m_watch;
    bool m_answered = false; // since it was opened
    int m_highestPressure = 1;
    // Held while a signature is taken: each export sets the clipping anew.
    mutable std::mutex m_takeMutex;
    std::mutex m_newsMutex;   // the library's threads add news, the GUI thread takes them
    std::vector<News> m_news; // under the mutex
};
