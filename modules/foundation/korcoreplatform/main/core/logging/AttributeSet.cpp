#include "korcoreplatform/main/core/logging/AttributeSet_p.h"

#include "korcoreplatform/main/core/logging/JsonText_p.h"
#include "korcoreplatform/main/core/logging/LineBuffer_p.h"

#include <algorithm>
#include <utility>
#include <vector>

namespace TLog {
namespace {

/// The five texts before they become a set.
struct Five
{
    TString const& session;
    TString const& request;
    TString const& traceId;
    TString const& user;
    TString const& site;

    AttributeSet::Texts ToTexts() const
    {
        return {{u"sess", session},
                {u"req", request},
                {u"traceid", traceId},
                {u"user", user},
                {u"site", site}};
    }
};

/// A set with the texts at hand for a comparison.
struct KnownSet
{
    explicit KnownSet(Five const& five)
        : session(five.session), request(five.request), traceId(five.traceId), user(five.user),
          site(five.site), set(std::make_shared<AttributeSet>(five.ToTexts()))
    {}

    bool IsOf(Five const& five) const
    {
        return request == five.request && session == five.session && traceId == five.traceId &&
               user == five.user && site == five.site;
    }

    TString session;
    TString request;
    TString traceId;
    TString user;
    TString site;
    AttributeSet::Pointer set;
};

/// Without a destructor, so that it may be read until the thread is gone.
thread_local bool t_isThreadOver = false;

struct LastSet
{
    // Records are also made by the destructors that follow.
    ~LastSet() { t_isThreadOver = true; }

    std::unique_ptr<KnownSet const> known;
};

thread_local LastSet t_last;

/// A pointer to what is never destroyed; its copies share no count.
AttributeSet::Pointer Uncounted(AttributeSet const& set)
{
    return AttributeSet::Pointer(std::shared_ptr<void>(), &set);
}

std::string Render(AttributeSet::Texts const& texts)
{
    std::vector<AttributeSet::Texts::value_type const*> pairs;
    for (auto const& pair : texts) {
        pairs.push_back(&pair);
    }
    std::sort(pairs.begin(), pairs.end(),
              [](auto const* a, auto const* b) { return a->first < b->first; });
    LineBuffer json;
    for (auto const* pair : pairs) {
        JsonText::AppendString(json, pair->first);
        json.Append(':');
        JsonText::AppendString(json, pair->second);
        json.Append(',');
    }
    return std::string(json.View());
}

} // namespace

AttributeSet::AttributeSet(Texts texts) : m_texts(std::move(texts)), m_json(Render(m_texts)) {}

AttributeSet::Pointer AttributeSet::Find(TString const& session, TString const& request,
                                         TString const& traceId, TString const& user,
                                         TString const& site)
{
    Five const five{session, request, traceId, user, site};
    if (t_isThreadOver) {
        return std::make_shared<AttributeSet>(five.ToTexts());
    }
    std::unique_ptr<KnownSet const>& known = t_last.known;
    if (known == nullptr || !known->IsOf(five)) {
        known = std::make_unique<KnownSet const>(five);
    }
    return known->set;
}

AttributeSet::Pointer AttributeSet::OfPlaceholder()
{
    static AttributeSet const& s_set = *new AttributeSet(
        Five{Placeholder(), Placeholder(), Placeholder(), Placeholder(), Placeholder()}.ToTexts());
    return Uncounted(s_set);
}

AttributeSet::Pointer AttributeSet::Empty()
{
    static AttributeSet const& s_set = *new AttributeSet(Texts());
    return Uncounted(s_set);
}

TString const& AttributeSet::Placeholder()
{
    static TString const& s_text = *new TString(u"-");
    return s_text;
}

} // namespace TLog
