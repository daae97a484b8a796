#include "korcoreplatform/main/core/system/TEnvironment.h"

#include "korcoreplatform/main/core/system/EnvironmentLock_p.h"
#include "korsys/main/system/SystemQueries.h"

#include <QString>
#include <QStringList>

#include <shared_mutex>

namespace {

std::vector<TString> TextsOf(QStringList const& list)
{
    return std::vector<TString>(list.begin(), list.end());
}

} // namespace

TEnvironment TEnvironment::myEnvironment()
{
    std::shared_lock<TReadWriteLock> const lock(EnvironmentLock());
    if (SystemQueries::Environment() == nullptr) { // as `clearenv` leaves it; Qt would crash
        return TEnvironment();
    }
    return QProcessEnvironment::systemEnvironment();
}

void TEnvironment::clear()
{
    m_environment.clear();
}

bool TEnvironment::isEmpty() const
{
    return m_environment.isEmpty();
}

bool TEnvironment::contains(TString const& name) const
{
    return m_environment.contains(name.toQString());
}

void TEnvironment::insert(TString const& name, TString const& value)
{
    m_environment.insert(name.toQString(), value.toQString());
}

void TEnvironment::insert(QProcessEnvironment const& other)
{
    m_environment.insert(other);
}

void TEnvironment::insert(TEnvironment const& other)
{
    insert(other.m_environment);
}

void TEnvironment::remove(TString const& name)
{
    m_environment.remove(name.toQString());
}

TString TEnvironment::value(TString const& name, TString const& defaultValue) const
{
    return m_environment.value(name.toQString(), defaultValue.toQString());
}

std::vector<TString> TEnvironment::keys() const
{
    return TextsOf(m_environment.keys());
}

std::vector<TString> TEnvironment::toVector() const
{
    return TextsOf(m_environment.toStringList());
}

bool TEnvironment::operator==(TEnvironment const& other) const
{
    return *this == other.m_environment;
}

bool TEnvironment::operator==(QProcessEnvironment const& other) const
{
    return m_environment == other;
}

bool operator==(QProcessEnvironment const& a, TEnvironment const& b)
{
    return b == a;
}

bool operator!=(QProcessEnvironment const& a, TEnvironment const& b)
{
    return !(b == a);
}
