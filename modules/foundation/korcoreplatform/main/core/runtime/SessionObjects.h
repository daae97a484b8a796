/// A store for the objects of a session, for hosts that want none of their own.

#pragma once

#include "korcoreplatform/main/KorCorePlatformExport.h"
#include "korcoreplatform/main/core/runtime/CoreThreadContext.h"
#include "korcoreplatform/main/string/TString.h"

#include <memory>

/// Keeps objects in memory, under two sets of keys.
///
///     SessionObjectStore::SetSessionObjectsInterface(id, std::make_shared<SessionObjects>());
///
/// Storing null removes what is under the key. What is replaced or removed is destroyed behind the
/// lock, so its destructor may use the session; not so where the session itself ends.
///
/// Ownership: objects are shared with everybody who gets them. A session that holds an object that
/// holds the session is never destroyed.
/// Thread safety: the functions for synchronized objects are safe from any thread, and such objects
/// are read without waiting for each other. Those for the others are for one thread at a time. What
/// is in an object is not guarded in either case. A child made by `fork` begins sessions of its
/// own: in those of its parent, what other threads were changing stays locked.
class KORCOREPLATFORM_EXPORT SessionObjects final : public ISessionObjects
{
public:
    SessionObjects();
    SessionObjects(SessionObjects const&) = delete;
    SessionObjects& operator=(SessionObjects const&) = delete;
    ~SessionObjects() override;

    void SetUnsynchronizedObject(TString const& key, std::shared_ptr<boost::any> value) override;
    std::shared_ptr<boost::any> GetUnsynchronizedObject(TString const& key) override;
    void SetSynchronizedObject(TString const& key, std::shared_ptr<boost::any> value) override;
    std::shared_ptr<boost::any> GetSynchronizedObject(TString const& key) override;

private:
    struct Tables;

    std::unique_ptr<Tables> const m_tables; ///< Never null.
};
