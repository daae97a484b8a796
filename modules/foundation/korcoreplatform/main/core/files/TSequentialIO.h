/// Streams without a position.

#pragma once

#include "korcoreplatform/main/KorCorePlatformExport.h"
#include "korcoreplatform/main/core/files/TIO.h"

/// A stream whose bytes come one after the other and only once. Its size is what can be read now.
class KORCOREPLATFORM_EXPORT TSequentialIO : public TIO
{
public:
    ~TSequentialIO() override;

    bool AtEnd() const override;          ///< Is there nothing to read now?
    std::vector<char> ReadAll() override; ///< Throws as `Read(n)`.
};
