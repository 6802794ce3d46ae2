#pragma once

class QThread;

/// Threads nobody waits for (a discovery, a SMART read given up by its watchdog): each deletes
/// itself once its call returns. Until then it is kept on a list, so that one still blocked in
/// the kernel when the program ends is a known leftover and not a leak. Used on the owner's
/// thread only.
namespace DetachedThreads {

/// Keeps \a thread listed until it is destroyed.
void adopt(QThread *thread);

} // namespace DetachedThreads
