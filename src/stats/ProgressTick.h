#pragma once

/// The reader's running progress tick: one step for every nine SMART records read, wrapping
/// from 100 to 0. It is not a share of the file; the page's bar cycles on long files.
class ProgressTick
{
public:
    /// Counts one SMART record; returns the tick to report when one was reached, else -1.
    int count()
    {
        if (++m_counter < 10)
            return -1;
        m_counter = 1;
        const int reported = ++m_tick;
        if (m_tick == 100)
            m_tick = 0;
        return reported;
    }

private:
    int m_tick = 0;
    int m_counter = 1;
};
