// How a worker thread learns that there is work.
#pragma once

#include <atomic>

// Whoever brings work makes it visible first and rings then. The worker takes the count, looks for work, and
// where it finds none waits with that count: what is rung between its look and its wait ends the wait at
// once, so no ring is missed. Any thread may ring, one waits. Takes no memory and throws nothing. tests/order
// has a copy of the steps, which a checker runs in every order that C++ allows; change both.
class CWorkBell
{
public:
    void Ring()
    {
        m_nRings.fetch_add(1);
        m_nRings.notify_all();
    }

    unsigned Rings() const { return m_nRings.load(); }

    // Sleeps until there are more rings than these.
    void WaitBeyond(unsigned nRings) const { m_nRings.wait(nRings); }

private:
    std::atomic<unsigned> m_nRings{0}; // of all threads; it may wrap, since one ring more is all that counts
};
