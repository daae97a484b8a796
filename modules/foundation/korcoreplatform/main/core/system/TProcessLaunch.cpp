#include "korcoreplatform/main/core/system/TProcessLaunch.h"

#include "korcoreplatform/main/string/TFormatString.h"

#include <algorithm>
#include <cstring>
#include <system_error>

namespace {

std::vector<std::string> Utf8Of(std::vector<TString> const& texts)
{
    std::vector<std::string> result;
    result.reserve(texts.size());
    for (TString const& text : texts) {
        result.push_back(text.toStdString());
    }
    return result;
}

bool HasZero(std::string const& text)
{
    return text.find('\0') != std::string::npos;
}

bool AnyHasZero(std::vector<std::string> const& texts)
{
    return std::any_of(texts.begin(), texts.end(), HasZero);
}

bool IsEntry(std::string const& entry)
{
    std::size_t const nameLength = entry.find('=');
    return nameLength != 0 && nameLength != std::string::npos && !HasZero(entry);
}

bool IsVariable(std::pair<std::string, std::string> const& variable)
{
    auto const& [name, value] = variable;
    return !name.empty() && name.find('=') == std::string::npos && !HasZero(name) &&
           !HasZero(value);
}

char16_t const* WhatFailed(TProcessLaunch::Failure failure)
{
    switch (failure) {
    case TProcessLaunch::Failure::Request:
        return u"was given a text that is not allowed";
    case TProcessLaunch::Failure::InputFile:
        return u"has an input file that could not be opened";
    case TProcessLaunch::Failure::Streams:
        return u"could not be given streams";
    case TProcessLaunch::Failure::WorkingDirectory:
        return u"could not enter its working directory";
    case TProcessLaunch::Failure::None:
    case TProcessLaunch::Failure::Program:
        break;
    }
    return u"could not be started";
}

} // namespace

TProcessLaunch::TProcessLaunch(TPath const& program, std::vector<TString> const& arguments)
    : m_program(program.NativeString().toStdString()), m_arguments(Utf8Of(arguments))
{}

TProcessLaunch& TProcessLaunch::Environment(std::vector<TString> const& entries)
{
    m_environment = Utf8Of(entries);
    return *this;
}

TProcessLaunch& TProcessLaunch::Variable(TString const& name, TString const& value)
{
    std::string key = name.toStdString();
    auto const found = std::find_if(m_variables.begin(), m_variables.end(),
                                    [&key](auto const& known) { return known.first == key; });
    if (found != m_variables.end()) {
        found->second = value.toStdString();
    } else {
        m_variables.emplace_back(std::move(key), value.toStdString());
    }
    return *this;
}

TProcessLaunch& TProcessLaunch::WorkingDirectory(TPath const& directory)
{
    m_workingDirectory = directory.NativeString().toStdString();
    return *this;
}

TProcessLaunch& TProcessLaunch::InputText(TString const& text)
{
    return InputBytes(text.toStdString());
}

TProcessLaunch& TProcessLaunch::InputBytes(std::string bytes)
{
    m_input = Input::Bytes;
    m_inputText = std::move(bytes);
    return *this;
}

TProcessLaunch& TProcessLaunch::InputFile(TPath const& file)
{
    m_input = Input::File;
    m_inputText = file.NativeString().toStdString();
    return *this;
}

TProcessLaunch& TProcessLaunch::OutputLimit(std::size_t bytes)
{
    m_outputLimit = bytes;
    return *this;
}

TProcessLaunch& TProcessLaunch::ErrorLimit(std::size_t bytes)
{
    m_errorLimit = bytes;
    return *this;
}

TProcessLaunch& TProcessLaunch::MergeErrorIntoOutput(bool isMerged)
{
    m_isMerged = isMerged;
    return *this;
}

TProcessLaunch& TProcessLaunch::OwnProcessGroup(bool isOwn)
{
    m_isOwnGroup = isOwn;
    return *this;
}

TProcessLaunch& TProcessLaunch::Deadline(int ms)
{
    m_deadlineMs = ms;
    return *this;
}

TProcessLaunch& TProcessLaunch::TerminationGrace(int ms)
{
    m_graceMs = std::max(ms, 0);
    return *this;
}

bool TProcessLaunch::IsWellFormed() const
{
    bool const isFileName = m_input == Input::File;
    return !HasZero(m_program) && !AnyHasZero(m_arguments) && !HasZero(m_workingDirectory) &&
           !(isFileName && HasZero(m_inputText)) &&
           std::all_of(m_variables.begin(), m_variables.end(), IsVariable) &&
           (!m_environment || std::all_of(m_environment->begin(), m_environment->end(), IsEntry));
}

std::vector<char const*> TProcessLaunch::ArgumentVector() const
{
    std::vector<char const*> result;
    result.reserve(m_arguments.size() + 2);
    result.push_back(m_program.c_str());
    for (std::string const& argument : m_arguments) {
        result.push_back(argument.c_str());
    }
    result.push_back(nullptr);
    return result;
}

/// Is the entry about a variable that has a value of its own?
bool TProcessLaunch::IsReplaced(char const* entry) const
{
    return std::any_of(m_variables.begin(), m_variables.end(), [entry](auto const& variable) {
        std::size_t const n = variable.first.size();
        return std::strncmp(entry, variable.first.c_str(), n) == 0 && entry[n] == '=';
    });
}

std::vector<char const*>
TProcessLaunch::EnvironmentVector(char const* const* inherited,
                                  std::vector<std::string>& ownEntries) const
{
    std::vector<char const*> result;
    auto const add = [&](char const* entry) {
        if (!IsReplaced(entry)) {
            result.push_back(entry);
        }
    };
    if (m_environment) {
        for (std::string const& entry : *m_environment) {
            add(entry.c_str());
        }
    } else {
        for (; inherited != nullptr && *inherited != nullptr; ++inherited) {
            add(*inherited);
        }
    }
    ownEntries.reserve(m_variables.size()); // the texts stay where they are
    for (auto const& [name, value] : m_variables) {
        result.push_back(ownEntries.emplace_back(name).append("=").append(value).c_str());
    }
    result.push_back(nullptr);
    return result;
}

TString TProcessLaunch::Result::Description() const
{
    switch (end) {
    case End::Exited:
        return TFormat(u"exited with code %1", exitCode);
    case End::Signaled:
        return TFormat(u"was ended by signal %1", signal);
    case End::TimedOut:
        return u"did not end before its deadline";
    case End::NotStarted:
        return TFormat(u"%1: %2", WhatFailed(failure),
                       TString::fromStdString(std::generic_category().message(error)));
    case End::Unknown:
        break;
    }
    return u"ended in an unknown way";
}

TString TProcessLaunch::Result::OutputText() const
{
    return TString::fromStdString(output);
}

TString TProcessLaunch::Result::ErrorText() const
{
    return TString::fromStdString(errorOutput);
}
