// A canvas with the fingerprint's layer over it where the model has one, and the layer's side of it.
#pragma once

#include "canvas/signcanvas.h"
#include "fingerprint/fingerprintmerge.h"

#include <optional>
#include <utility>

namespace scribera::test {

// Lays itself over the canvas. The canvas lock is taken as the library does.
class PrintLayer
{
public:
    PrintLayer(const CObjectIdentity& identity, CSignCanvas& canvas) : m_canvas(canvas)
    {
        if (!identity.m_Model.m_bHasFingerprint)
            return;
        m_merge.emplace(identity);
        canvas.SetLayer(*m_merge);
    }

    int score()
    {
        const CLocker lock(m_canvas.CanvasMutex());
        return m_merge->Score();
    }

    void take(QImage print, int score)
    {
        const CLocker lock(m_canvas.CanvasMutex());
        m_merge->SetFingerprint(std::move(print), score, m_merge->Clears());
    }

    void place(int action, const QRect& rect)
    {
        const CLocker lock(m_canvas.CanvasMutex());
        m_merge->SetFPRect(rect);
        m_merge->SetActionID(action);
    }

private:
    CSignCanvas& m_canvas;
    std::optional<CFingerprintMerge> m_merge;
};

} // namespace scribera::test
