#pragma once

#include "System/Patterns/resourceMgr.h"

#include "Support/PoolHeap/poolBlk.h"

/// Is told what happens to the media.
class MediaWatcher {
public:
    virtual void loaded(Qel::String const &name, PoolBlk const &bytes) = 0; ///< before it counts as loaded
    virtual void unloaded(Qel::String const &name) = 0;

protected:
    ~MediaWatcher() = default;
};

/// The bytes of files, each held as it is. Nobody refers to them, so what was not used for longest goes when
/// the budget is short.
class MediaManager final : public Qel::cResourceManager {
public:
    explicit MediaManager(MediaWatcher &watcher);
    ~MediaManager() override { clear(); }

    void clear(); ///< unloads all, and tells nobody

protected:
    Qel::cResource *create(Qel::String const &name, void *user) override;
    void destroy(Qel::cResource *resource) override;

private:
    class File;

    MediaWatcher &m_watcher;
    bool m_isClearing = false;
};
