// The widget that shows a fingerprint apart from the signing canvas.
#pragma once

#include "fingerprint/fppicture.h"
#include "gui/repaintposter.h"

#include <QWidget>

#include <memory>

// Lives on the GUI thread and belongs to its parent, or, without one, to the sign object. Its picture is
// shared with the sign object and outlives it.
class CK421BFPWidget final : public QWidget, private ICanvasObserver
{
    Q_OBJECT

public:
    explicit CK421BFPWidget(QWidget* parent);
    ~CK421BFPWidget() override;

    const std::shared_ptr<CFPPicture>& Picture() const { return m_pPicture; }

protected:
    bool event(QEvent* pEvent) override;
    void hideEvent(QHideEvent* pEvent) override;
    void paintEvent(QPaintEvent* pEvent) override;
    void showEvent(QShowEvent* pEvent) override;

private:
    void CanvasChanged(const QRect& rcChanged) override { m_RepaintPoster.Repaint(rcChanged); }

    CRepaintPoster m_RepaintPoster{*this};
    std::shared_ptr<CFPPicture> m_pPicture;
};
