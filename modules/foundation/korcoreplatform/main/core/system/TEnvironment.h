/// Sets of environment variables, as child processes get them.

#pragma once

#include "korcoreplatform/main/KorCorePlatformExport.h"
#include "korcoreplatform/main/string/TString.h"

#include <QProcessEnvironment>

#include <type_traits>
#include <vector>

/// Names with values. The set is a value of its own: changing it changes no process. It serves
/// wherever Qt's own type is asked for, and copies share their variables until one is changed.
///
///     TEnvironment environment = TEnvironment::myEnvironment();
///     environment.insert(u"LANG", u"C");
///     process.Environment(environment);
///
/// Names count by letter case. A variable may have an empty value, which is not the same as none.
///
/// Throws: what converting a text throws, in every function that takes or gives one.
/// Thread safety: one object may be read from several threads; a write needs it alone.
class KORCOREPLATFORM_EXPORT TEnvironment
{
public:
    TEnvironment() = default; ///< No variables.
    TEnvironment(QProcessEnvironment const& environment) : m_environment(environment) {}

    /// From Qt's own type; a template, so that `environment = {}` can only mean an empty set.
    template <class Environment,
              std::enable_if_t<std::is_same_v<Environment, QProcessEnvironment>, int> = 0>
    TEnvironment& operator=(Environment const& environment)
    {
        m_environment = environment;
        return *this;
    }

    /// This process's environment as it is now.
    static TEnvironment myEnvironment();

    operator QProcessEnvironment&() { return m_environment; }
    operator QProcessEnvironment const&() const { return m_environment; }

    void clear();
    bool isEmpty() const;
    bool contains(TString const& name) const;
    void insert(TString const& name, TString const& value); ///< Adds or replaces.
    void insert(QProcessEnvironment const& other);          ///< Adds or replaces each variable.
    void insert(TEnvironment const& other);
    void remove(TString const& name); ///< Removing what is not there changes nothing.

    /// `defaultValue` only for a variable that is not there.
    TString value(TString const& name, TString const& defaultValue) const;

    // All variables, in the order in which Qt gives them.

    std::vector<TString> keys() const;
    std::vector<TString> toVector() const; ///< Each as "name=value".

    bool operator==(TEnvironment const& other) const;
    bool operator==(QProcessEnvironment const& other) const;
    bool operator!=(TEnvironment const& other) const { return !(*this == other); }
    bool operator!=(QProcessEnvironment const& other) const { return !(*this == other); }

private:
    QProcessEnvironment m_environment;
};

KORCOREPLATFORM_EXPORT bool operator==(QProcessEnvironment const& a, TEnvironment const& b);
KORCOREPLATFORM_EXPORT bool operator!=(QProcessEnvironment const& a, TEnvironment const& b);
