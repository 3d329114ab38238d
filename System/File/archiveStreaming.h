#pragma once

#include "System/Patterns/streamCallback.h"
#include "System/System/export.h"
#include "System/System/priority.h"

#include <cstdint>

namespace Qel {

struct FileInfo;

/// A background loader, which a plugin implements and cArchiveContainer::setStreamingMgr() installs.
///
/// All operations are called on the thread that drives the resource managers, and the callback is made on
/// that thread: nothing behind it guards against another. The archives' iArchive::readFile() may be called
/// anywhere.
///
/// The callback drops what nobody waits for any more: it looks the manager and the resource up before it
/// touches them. So a late or a second call does no harm.
///
/// @par Ownership  The plugin's. It takes itself out with setStreamingMgr(nullptr) before it goes.
class QEL_API iArchiveStreaming {
public:
    virtual ~iArchiveStreaming() = default;

    /// Forgets or finishes all pending requests, so that no archive is read when it returns. Called before a
    /// container drops its tables and before an archive is destroyed.
    virtual void flushRequests() = 0;

    /// Asks for a file's contents in a block taken under @p memoryContext, handed to
    /// `callback(name, block, user, STREAM_CACHED)`. A file that cannot be read is not called for.
    /// @param info      with the archive and its handle; the record lives only for the call
    /// @param user      kept for the callback
    /// @param priority  the most urgent first, by the number
    virtual void requestFile(FileInfo *info, StreamCallback callback, void *user, unsigned int memoryContext,
                             ePriority priority) = 0;

    /// Drops the pending requests for this name, if there are any: they are not called for.
    virtual void abortFile(char const *name) = 0;

    /// Makes the callbacks for what has been loaded. For hosts and tools without a frame loop: where there is
    /// a Root, a streamer sees to it itself once a frame.
    virtual void deliverFinished() {}
};

} // namespace Qel
