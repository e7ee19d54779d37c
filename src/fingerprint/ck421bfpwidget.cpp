#include "fingerprint/ck421bfpwidget.h"

#include "canvas/drawing.h"
#include "sync/attempt.h"

#include <QPaintEvent>
#include <QPainter>

CK421BFPWidget::CK421BFPWidget(QWidget* parent)
    : QWidget(parent), m_pPicture(std::make_shared<CFPPicture>(width(), height()))
{
    m_pPicture->Attach(*this, *this);
}

CK421BFPWidget::~CK421BFPWidget()
{
    m_pPicture->DetachView();
}

bool CK421BFPWidget::event(QEvent* pEvent)
{
    return m_RepaintPoster.TakesEvent(*pEvent) || QWidget::event(pEvent);
}

void CK421BFPWidget::hideEvent(QHideEvent* pEvent)
{
    if (!pEvent->spontaneous()) // a minimised window is still visible
        m_pPicture->SetVisible(false);
    QWidget::hideEvent(pEvent);
}

void CK421BFPWidget::showEvent(QShowEvent* pEvent)
{
    m_pPicture->SetVisible(true);
    QWidget::showEvent(pEvent);
}

void CK421BFPWidget::paintEvent(QPaintEvent* pEvent)
{
    const QRect rcExposed = pEvent->rect();
    const auto Paint = [&] {
        const QImage Exposed = Opaque(m_pPicture->CopyOf(rcExposed));
        QPainter Painter(this);
        Painter.drawImage(rcExposed.topLeft(), Exposed);
    };
    if (!Attempt(Paint))
        m_RepaintPoster.RepaintLater(rcExposed);
}
