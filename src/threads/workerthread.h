// The worker threads of a sign object.
#pragma once

#include "model/objectidentity.h"
#include "sync/sdkthread.h"

#include <functional>
#include <memory>

// Repeats one pass until that says that its sign object shuts down, without a pause in between: what waits
// for it starts at once.
class CWorkerThread : public CSdkThread
{
public:
    // What the thread repeats; false ends the thread. Called on the thread itself.
    using Pass = std::function<bool()>;

    // pOwner is the sign object as its own class, which the log shows.
    CWorkerThread(const CObjectIdentity& Identity, const CTypeNames& Names, const void* pOwner, Pass OnePass);

private:
    void Body() final;

    const CTypeNames& m_Names;
    const Pass m_Pass;
};

// The thread that runs a sign object's key actions, of the class that the model and kind have for it.
std::unique_ptr<CWorkerThread> MakeKeyActionThread(const CObjectIdentity& Identity, const void* pOwner,
                                                   CWorkerThread::Pass OnePass);

// The thread that shows fingerprints on the pad. Only for models with a fingerprint reader.
std::unique_ptr<CWorkerThread> MakeShowFPImageThread(const CObjectIdentity& Identity, const void* pOwner,
                                                     CWorkerThread::Pass OnePass);
