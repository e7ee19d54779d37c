#include "threads/workersetting.h"

#include <atomic>
#include <cstdlib>
#include <cstring>

namespace {

constexpr int kNotChosen = -1;

// Written by whichever thread the host chooses on, read by the one that makes an object.
constinit std::atomic<int> s_nChosen{kNotChosen};

} // namespace

void CWorkerSetting::Choose(EIdle eIdle)
{
    s_nChosen.store(static_cast<int>(eIdle));
}

EIdle CWorkerSetting::ForNewObject(const CLogLabel& Label)
{
    if (const int nChosen = s_nChosen.load(); nChosen != kNotChosen)
        return static_cast<EIdle>(nChosen);
    const char* const pszValue = std::getenv("SCRIBERA_WORKERS");
    if (!pszValue || std::strcmp(pszValue, "poll") == 0)
        return EIdle::Poll;
    if (std::strcmp(pszValue, "wait") == 0)
        return EIdle::Wait;
    SCR_LOG(Label, "<%ld>-SCRIBERA_WORKERS is neither 'poll' nor 'wait', polling !");
    return EIdle::Poll;
}
