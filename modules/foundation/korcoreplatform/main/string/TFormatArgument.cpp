#include "korcoreplatform/main/string/TFormatArgument.h"

#include "korsys/main/text/NumberText_p.h"

#include <QString>

TFormatArgument::Units::Units(QString const& text) noexcept
    : m_view(reinterpret_cast<char16_t const*>(text.constData()),
             static_cast<std::size_t>(text.size()))
{}

TFormatArgument::Written::Written(int number) noexcept
    : m_length(NumberText::WriteDecimal(m_units, std::int32_t(number)))
{}

TFormatArgument::Written::Written(unsigned int number) noexcept
    : m_length(NumberText::WriteDecimal(m_units, std::uint32_t(number)))
{}

TFormatArgument::Written::Written(long long number) noexcept
    : m_length(NumberText::WriteSigned(m_units, number))
{
    static_assert(kUnits >= NumberText::kMaxIntegerUnits);
}

TFormatArgument::Written::Written(unsigned long long number) noexcept
    : m_length(NumberText::WriteUnsigned(m_units, number))
{}

TFormatArgument::Written::Written(void const* address) noexcept
    : m_length(NumberText::WritePointer(m_units, address, true, false))
{}
