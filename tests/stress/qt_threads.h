#pragma once

#include <QThreadPool>

namespace scribera::test {

// They convert images, and linger for half a minute: whoever counts threads or descriptors ends them first.
inline void endQtsOwnThreads()
{
    QThreadPool::globalInstance()->waitForDone();
}

} // namespace scribera::test
