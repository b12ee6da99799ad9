// URLs of database servers, and what may be shown of them.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace quarl
{

/// `text` with every byte that is not `plain` as %XX.
std::string percent_encoded(std::string_view text, bool (*plain)(unsigned char));

/// A database's name as the user gave it. Of a path all may be shown.
///
/// Secret in a URL are the password in front of the host and the values of parameters whose names
/// speak of passwords, secrets or keys. Where libpq could make nothing of a "@" or "&" that should
/// have been encoded, it belongs to the secret.
class DatabaseUrl
{
public:
    explicit DatabaseUrl(std::string_view name);

    /// What messages show: "***" for each secret.
    [[nodiscard]] const std::string &shown() const { return shown_; }

    /// Whether it is clear where the password ends; when not, no library may see the URL.
    [[nodiscard]] bool is_clear() const { return is_clear_; }

    /// The URL for a library that repeats parts of it in its messages. The secrets are parameters
    /// at the end with every byte encoded: whatever they are, they can be told from other words.
    [[nodiscard]] std::string connection() const;

    /// A library's words without the secrets; what `shown` shows anyway is none.
    [[nodiscard]] std::string without_secrets(std::string words) const;

private:
    struct Secret {
        std::string key; ///< of the parameter; empty when it is none
        std::string value;
    };

    void take_parameters(std::string_view rest);

    std::string shown_;
    std::string base_;       ///< what stands in front of the parameters
    std::string parameters_; ///< those without secrets, each with "&" behind it
    std::vector<Secret> secrets_;
    bool is_clear_ = true;
};

} // namespace quarl
