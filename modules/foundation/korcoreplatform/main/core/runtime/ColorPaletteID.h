/// The identifier of a colour palette.

#pragma once

#include "korcoreplatform/main/string/TString.h"

/// A text that names a colour palette, as a type of its own. Identifiers compare and order as their
/// texts do.
///
/// Thread safety: one object may be read from several threads; a write needs it alone.
class ColorPaletteID
{
public:
    ColorPaletteID() noexcept = default; ///< Empty.
    explicit ColorPaletteID(TString const& id) : m_id(id) {}

    void Clear() { m_id.clear(); }

    TString AsString() const { return m_id; }
    bool IsEmpty() const { return m_id.isEmpty(); }

    bool operator==(ColorPaletteID const& other) const { return m_id == other.m_id; }
    bool operator!=(ColorPaletteID const& other) const { return m_id != other.m_id; }
    bool operator<(ColorPaletteID const& other) const { return m_id < other.m_id; }

private:
    TString m_id;
};
