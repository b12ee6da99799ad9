// Findings of an earlier run, which are not to be told again.
#pragma once

#include <set>
#include <string>

namespace quarl
{

class Baseline
{
public:
    /// Reads JSON Lines as quarl-check prints them; they add to what was read before. Returns what
    /// is wrong with the file, or "".
    [[nodiscard]] std::string read(const std::string &path);
    [[nodiscard]] bool has(const std::string &fingerprint) const
    {
        return fingerprints_.contains(fingerprint);
    }
    [[nodiscard]] bool is_used() const { return used_; }

private:
    bool used_ = false;
    std::set<std::string> fingerprints_;
};

} // namespace quarl
