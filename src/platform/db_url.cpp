#include "platform/db_url.h"

#include <algorithm>
#include <cstddef>

namespace quarl
{

namespace
{

constexpr std::string_view Mask = "***";
constexpr auto npos = std::string_view::npos;

bool is_alphanumeric(int c)
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9');
}

std::string lower_case(std::string_view text)
{
    std::string lower(text);
    for (char &c : lower)
        if (c >= 'A' && c <= 'Z')
            c = static_cast<char>(c - 'A' + 'a');
    return lower;
}

/// The value of two digits at the beginning of a text; -1 when there are none.
int hex_byte(std::string_view text)
{
    const std::string digits = lower_case(text.substr(0, 2));
    int byte = 0;
    for (const char c : digits) {
        const std::size_t digit = std::string_view("0123456789abcdef").find(c);
        if (digit == npos)
            return -1;
        byte = byte * 16 + static_cast<int>(digit);
    }
    return digits.size() == 2 ? byte : -1;
}

/// A "%" without two digits stands for itself.
std::string percent_decoded(std::string_view text)
{
    std::string decoded;
    while (!text.empty()) {
        const int byte = text[0] == '%' ? hex_byte(text.substr(1)) : -1;
        decoded += byte < 0 ? text[0] : static_cast<char>(static_cast<unsigned char>(byte));
        text.remove_prefix(byte < 0 ? 1 : 3);
    }
    return decoded;
}

std::string all_encoded(std::string_view text)
{
    return percent_encoded(text, [](unsigned char) { return false; });
}

/// Where the user or the host begins in a URL; npos in a path. What looks like PostgreSQL's scheme
/// counts without slashes, too.
std::size_t begin_of_host(std::string_view name)
{
    const std::size_t colon = name.find(':');
    const std::string scheme = lower_case(name.substr(0, colon));
    const auto fits = [](char c) { return is_alphanumeric(c) || c == '+' || c == '-' || c == '.'; };
    if (colon == npos || scheme.empty() || scheme == "sqlite" || !std::ranges::all_of(scheme, fits))
        return npos;
    if (!name.substr(colon).starts_with("://") && !scheme.starts_with("postgres"))
        return npos;
    return std::min(name.find_first_not_of('/', colon + 1), name.size());
}

/// Where something that is no number stands in place of a port in a list of hosts; npos if nowhere.
std::size_t bad_port(std::string_view url, std::size_t at)
{
    const auto next = [url](const char *ends, std::size_t from) {
        return std::min(url.find_first_of(ends, from), url.size());
    };
    while (at < url.size() && url[at] != '/' && url[at] != '?') {
        if (url[at] == '[')
            at = next("]", at);
        at = next(":,/?", at);
        const std::size_t end = next(",/?", at);
        const std::string port = percent_decoded(url.substr(at, end - at));
        if (port.find_first_not_of("0123456789 ", 1) != npos)
            return at + 1;
        at = end < url.size() && url[end] == ',' ? end + 1 : end;
    }
    return npos;
}

/// Where a URL has its password. That is not clear where something stands in place of a port that
/// is no number, or where the password may have a "/" or "?" in it behind a "@": then all that may
/// belong to it is taken for it.
struct Password {
    std::size_t begin;
    std::size_t end;
    bool is_clear = true;
};

Password find_password(std::string_view url, std::size_t host)
{
    const std::size_t at = url.find_first_of("@/", host);
    if (at == npos || url[at] != '@') {
        const std::size_t port = bad_port(url, host);
        if (port == npos)
            return {host, host};
        const std::size_t last = url.rfind('@');
        return {port, last != npos && last > port ? last : url.size(), false};
    }
    const std::size_t colon = url.find(':', host);
    if (colon > at)
        return {at, at};
    // The host may be an abstract socket, whose name begins with a "@".
    std::size_t end = url.rfind('@', url.find_first_of("/?", at));
    if (end > at && url[end - 1] == '@')
        --end;
    if (colon + 1 == end)
        return {end, end};
    // In front of the parameters, or in something that is no parameter.
    const std::size_t query = url.find('?', end);
    const bool has_equals = url.find('=', query) < url.find('@', query);
    const std::size_t last = url.rfind('@', query == npos || has_equals ? query : npos);
    const bool is_clear = url.substr(end, last - end).find_first_of("/?") == npos;
    return {colon + 1, is_clear ? end : last, is_clear};
}

/// Whether the value of a parameter is secret. Parameters that libpq does not know may be, too.
bool is_secret(std::string_view key)
{
    const std::string lower = lower_case(key);
    const auto has = [&lower](const char *part) { return lower.find(part) != npos; };
    return lower != "passfile" && (has("pass") || has("pwd") || has("secret") || has("_key"));
}

/// Where the first parameter ends. A value that may hold a raw "&" takes along what follows, up to
/// the next parameter that has a "=".
std::size_t parameter_end(std::string_view parameters, bool takes_more)
{
    const std::size_t end = std::min(parameters.find('&'), parameters.size());
    if (!takes_more || end + 1 >= parameters.size())
        return end;
    const std::size_t equals = parameters.find('=', end);
    return equals == npos ? parameters.size() : parameters.rfind('&', equals);
}

void replace_all(std::string *text, std::string_view from, std::string_view to)
{
    for (std::size_t at = 0; (at = text->find(from, at)) != npos; at += to.size())
        text->replace(at, from.size(), to);
}

/// Replaces a text where it stands as a word of its own.
void mask_word(std::string *words, std::string_view word)
{
    for (std::size_t at = 0; (at = words->find(word, at)) != npos; ++at) {
        const std::size_t end = at + word.size();
        if ((at == 0 || !is_alphanumeric((*words)[at - 1])) &&
            (end == words->size() || !is_alphanumeric((*words)[end])))
            words->replace(at, word.size(), Mask);
    }
}

/// Replaces whole quotations that hold a text, so that nobody sees where it stood.
void mask_quotations(std::string *words, std::string_view text)
{
    for (std::size_t begin = 0; (begin = words->find('"', begin)) != npos;) {
        const std::size_t end = std::min(words->find('"', ++begin), words->size());
        const bool holds = std::string_view(*words).substr(begin, end - begin).find(text) != npos;
        if (holds)
            words->replace(begin, end - begin, Mask);
        begin += (holds ? Mask.size() : end - begin) + 1;
    }
}

} // namespace

std::string percent_encoded(std::string_view text, bool (*plain)(unsigned char))
{
    std::string encoded;
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if (plain(byte))
            encoded += c;
        else
            encoded += {'%', "0123456789ABCDEF"[byte >> 4], "0123456789ABCDEF"[byte & 15]};
    }
    return encoded;
}

DatabaseUrl::DatabaseUrl(std::string_view name)
{
    const std::size_t host = begin_of_host(name);
    if (host == npos) {
        shown_ = base_ = name;
        return;
    }
    const Password password = find_password(name, host);
    const std::size_t query = std::min(name.find('?', password.end), name.size());
    shown_ = name.substr(0, query);
    base_ = shown_;
    if (password.end > password.begin) {
        const std::size_t length = password.end - password.begin;
        shown_.replace(password.begin, length, Mask);
        base_.erase(password.begin - 1, length + 1);
        secrets_.push_back({"password", percent_decoded(name.substr(password.begin, length))});
    }
    is_clear_ = password.is_clear;
    if (query < name.size())
        take_parameters(name.substr(query + 1));
    if (secrets_.empty())
        shown_ = name;
}

void DatabaseUrl::take_parameters(std::string_view rest)
{
    for (char joint = '?'; !rest.empty(); joint = '&') {
        const std::size_t equals = std::min(rest.find_first_of("=&"), rest.size());
        const bool has_value = rest.substr(equals).starts_with('=');
        const std::string key = percent_decoded(rest.substr(0, equals));
        const bool secret = is_secret(key);
        const std::string_view all = rest.substr(0, parameter_end(rest, secret && has_value));
        rest.remove_prefix(std::min(all.size() + 1, rest.size()));
        const std::string_view shown = all.substr(0, has_value ? equals + 1 : 0);
        shown_ += joint;
        const bool masked = secret && shown.size() < all.size();
        shown_.append(masked ? shown : all).append(masked ? Mask : "");
        if (masked)
            secrets_.push_back({has_value ? key : "", percent_decoded(all.substr(shown.size()))});
        if (!all.empty() && (!masked || !has_value))
            parameters_.append(all) += '&';
    }
}

std::string DatabaseUrl::connection() const
{
    // SOCI cuts the text at blanks.
    const auto plain = [](unsigned char c) { return c > ' ' && c < 0x7F && c != '"'; };
    const auto plain_key = [](unsigned char c) { return c == '_' || is_alphanumeric(c); };
    std::string url = percent_encoded(base_ + "?" + parameters_, plain);
    for (const Secret &secret : secrets_)
        if (!secret.key.empty())
            url += percent_encoded(secret.key, plain_key) + "=" + all_encoded(secret.value) + "&";
    return url + "fallback_application_name=quarl";
}

std::string DatabaseUrl::without_secrets(std::string words) const
{
    for (const Secret &secret : secrets_) {
        if (!secret.value.empty())
            replace_all(&words, all_encoded(secret.value), Mask);
        if (secret.value.empty() || shown_.find(secret.value) != npos)
            continue;
        mask_word(&words, secret.value);
        mask_quotations(&words, secret.value);
    }
    return words;
}

} // namespace quarl
