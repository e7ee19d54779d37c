// A signature taken at the pad, from opening it to closing it.
#pragma once

#include "driver.h"
#include "signature.h"
#include "strokes.h"
#include "waiting.h"

#include <QColor>
#include <QSize>

class SignWindow;

struct Pen
{
    int width;
    QColor color;
};

// In the window, or at the terminal without one. Returns once the person has confirmed what was taken. Throws
// Failure, Interrupted, and Ending when there is no signature.
Strokes takeSignature(const CPadModel& model, const Driver& driver, const QSize& canvas, const Pen& pen,
                      const Deadline& deadline, SignWindow* window, const Taking& take);
