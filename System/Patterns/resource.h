#pragma once

#include "System/Patterns/streamCallback.h"
#include "System/System/export.h"
#include "System/System/string.h"

#include <cstdint>

namespace Qel {

/// Something that is loaded by name, counted, and thrown away again when memory is short.
///
/// A resource belongs to the cResourceManager that it is registered with. It gets its content in one of two
/// ways: load() fetches it and answers true, or load() stays as it is, and the manager reads the file of the
/// resource's name and hands it to stream_callback().
///
/// @code
/// class Texture : public Qel::cResource {
/// public:
///     explicit Texture(Qel::String const &file) { setName(file); }
///
/// protected:
///     void unload() override { m_pixels.free(); }
///     bool stream_callback(PoolBlk &data, Qel::eStreamCallback) override
///     {
///         m_pixels = std::move(data);
///         size = m_pixels.size();
///         loaded = true;
///         return true;
///     }
///
/// private:
///     PoolBlk m_pixels;
/// };
/// @endcode
///
/// @par Threads  Belongs to the thread that drives its manager.
class QEL_API cResource {
public:
    cResource();

    /// All fields, the reference count and the flags too. The copy is registered with no manager.
    cResource(cResource const &other);
    cResource &operator=(cResource const &other); ///< as the copy; this one stays registered where it is
    virtual ~cResource();

    /// Bytes that count against the manager's budget. A class that works them out anew must keep the field
    /// `size` equal.
    virtual unsigned int getSize() { return size; }

    virtual bool operator<(cResource &other);                       ///< was it used less recently?
    virtual unsigned int getLoadBalanceFactor() const { return 1; } ///< asked by nobody in the library

protected:
    friend class cResourceManager;

    /// Called by the manager to load at once, on its thread.
    /// @return true if the content is there, and the manager then sets `loaded`; false to be given the
    ///         file's content through stream_callback()
    virtual bool load();

    /// Called by the manager to give the content up. `size` and `loaded` are cleared by the manager after
    /// it.
    virtual void unload();

    /// Called by the manager with the content of the resource's file. Takes what it needs out of @p data,
    /// which is freed after the call, and sets `size` and `loaded`; if it does not set `loaded`, the
    /// next request tries again.
    /// @return looked at by nobody
    virtual bool stream_callback(PoolBlk &data, eStreamCallback reason);

    void setName(String const &text) { name = text; }

public:
    String const &getName() const { return name; }
    String const &getFactoryName() const { return factoryName; } ///< of the factory that made it, or empty
    long long getLastAccess() const { return lastAccess; }       ///< the manager's tick of the last use
    bool isLoaded() const { return loaded; }
    bool isStreaming() const { return streaming; } ///< is a load under way?

    unsigned int getRefCount() const { return refCount; }
    void incRefCount() { ++refCount; }
    void decRefCount() { refCount -= refCount > 0; } ///< stays at 0
    void touch();                                    ///< counts as used now

protected:
    String name;        ///< in normal form where it is to be found by name: lower case and slashes
    String factoryName; ///< set by whoever makes it through a factory
    std::uint32_t lastAccess;
    std::uint32_t size = 0; ///< bytes counted against the budget
    std::uint32_t refCount = 0;
    bool loaded = false;
    bool streaming = false; ///< a load is under way

private:
    friend class ArchiveManager;

    std::uint32_t m_id = 0; // with the manager that it is registered with; 0 for none
};

} // namespace Qel
