// The worker threads of a sign object.
#pragma once

#include "model/objectidentity.h"
#include "sync/sdkthread.h"
#include "sync/workbell.h"
#include "threads/workersetting.h"

#include <functional>
#include <memory>

// What a pass of a worker found.
enum class EPass
{
    Worked,
    Idle,
    Over // the sign object shuts down
};

// What a worker thread does.
struct CWork
{
    std::function<EPass()> m_Pass; // repeated until it is over; called on the thread itself
    CWorkBell& m_Bell;             // rung when there is something for the pass, the end included
    EIdle m_eIdle;
};

// Repeats one pass until that says that its sign object shuts down.
class CWorkerThread : public CSdkThread
{
public:
    // pOwner is the sign object as its own class, which the log shows.
    CWorkerThread(const CObjectIdentity& Identity, const CTypeNames& Names, const void* pOwner, CWork Work);

    // After what ends the pass was said: has the thread look once more.
    void Wake() { m_Work.m_Bell.Ring(); }

private:
    void Body() final;

    const CTypeNames& m_Names;
    const CWork m_Work;
};

// The thread that runs a sign object's key actions, of the class that the model and kind have for it.
std::unique_ptr<CWorkerThread> MakeKeyActionThread(const CObjectIdentity& Identity, const void* pOwner,
                                                   CWork Work);

// The thread that shows fingerprints on the pad. Only for models with a fingerprint reader.
std::unique_ptr<CWorkerThread> MakeShowFPImageThread(const CObjectIdentity& Identity, const void* pOwner,
                                                     CWork Work);
