// Passwords in the URLs of databases: they reach the server, and no message.
#include "db_fixture.h"
#include "support/process.h"

#include <sys/socket.h>
#include <sys/un.h>
#include <system_error>
#include <thread>
#include <unistd.h>

namespace
{

const std::string Unclear =
    "it is not clear what the password is: write '/' as %2F and '@' as %40 in"
    " it, and a port as a number";
const std::string No_Socket =
    "connection to server on socket \"/none/.s.PGSQL.5432\" failed: No such file or directory";
const std::string No_File = "No such file or directory";
const std::string No_Parameter = "invalid URI query parameter: \"nix\"";

TEST(DatabaseUrl, MessagesShowNoPassword)
{
    const std::string bracket = "end of string reached when looking for matching \"]\" in IPv6 host"
                                " address in URI: \"postgresql://u@[::1/x?password=***&"
                                "fallback_application_name=quarl\"";
    const struct {
        std::string name, shown, words;
    } cases[] = {
        {"postgresql://u:sesame@%2Fnone/x", "postgresql://u:***@%2Fnone/x", No_Socket},
        {"postgres://u:s%40same@%2Fnone", "postgres://u:***@%2Fnone", No_Socket},
        {"postgresql://u:se@me@%2Fnone/x", "postgresql://u:***@%2Fnone/x", No_Socket},
        {"postgresql://u:se:same@%2Fnone/x", "postgresql://u:***@%2Fnone/x", No_Socket},
        {"postgresql://u:se?s me@%2Fnone/x", "postgresql://u:***@%2Fnone/x", No_Socket},
        {"postgresql://:sesame@%2Fnone/x", "postgresql://:***@%2Fnone/x", No_Socket},
        {"postgresql://u:sesame@@none/x", "postgresql://u:***@@none/x",
         "connection to server on socket \"@none/.s.PGSQL.5432\" failed: Connection refused"},
        {"postgresql://u:@%2Fnone/x", "postgresql://u:@%2Fnone/x", No_Socket},
        {"postgresql://u@%2Fnone/m@x?", "postgresql://u@%2Fnone/m@x?", No_Socket},
        {"postgresql://%2Fnone:5432/m@x", "postgresql://%2Fnone:5432/m@x", No_Socket},
        {"postgresql://u:sesame@[::1]:5/x?nix=1", "postgresql://u:***@[::1]:5/x?nix=1",
         No_Parameter},
        {"postgresql://[::1]:5,h:6/x?nix=1&", "postgresql://[::1]:5,h:6/x?nix=1&", No_Parameter},
        {"postgresql://u:sesame@h,[::1],g:5/x?nix=1", "postgresql://u:***@h,[::1],g:5/x?nix=1",
         No_Parameter},
        {"postgresql://u:sesame@[::1/x", "postgresql://u:***@[::1/x", bracket},
        {"postgresql:///x?host=/none&password=sesame&user=u",
         "postgresql:///x?host=/none&password=***&user=u", No_Socket},
        {"postgresql:///x?pass%77ord=s%65same&sslpassword=two&host=/none",
         "postgresql:///x?pass%77ord=***&sslpassword=***&host=/none", No_Socket},
        {"postgresql:///x?host=/none&password=se&same", "postgresql:///x?host=/none&password=***",
         No_Socket},
        {"postgresql:///x?password=&passfile=f&host=/none",
         "postgresql:///x?password=&passfile=f&host=/none", No_Socket},
        {"postgresql:///x?PGPASSWORD=sesame", "postgresql:///x?PGPASSWORD=***",
         "invalid URI query parameter: \"PGPASSWORD\""},
        {"postgresql:///x?passwordsesame", "postgresql:///x?***",
         "missing key/value separator \"=\" in URI query parameter: \"***\""},
        {"postgresql:///x?password=s%00same", "postgresql:///x?password=***",
         "forbidden value %00 in percent-encoded value: \"***\""},
        {"postgresql://u:s%zzsame@%2Fnone/x", "postgresql://u:***@%2Fnone/x", No_Socket},
        {"postgresql://u:se/same@h/x", "postgresql://u:***@h/x", Unclear},
        {"postgresql://u:se@sa/me@h/x?nix=1", "postgresql://u:***@h/x?nix=1", Unclear},
        {"postgresql://u:se@s?ame@h/x?nix=1", "postgresql://u:***@h/x?nix=1", Unclear},
        {"postgresql://u:sesame@h/x?nix=a@b", "postgresql://u:***@h/x?nix=a@b", No_Parameter},
        {"postgresql://u:sesame/x", "postgresql://u:***", Unclear},
        {"postgres:u:sesame@h/x", "postgres:u:***@h/x", No_File},
        {"other://u:sesame@h/x", "other://u:***@h/x", No_File},
        {"sqlite://u:sesame@h/x", "sqlite://u:sesame@h/x", No_File},
        {"u:sesame@h?password=sesame", "u:sesame@h?password=sesame", No_File},
    };
    for (const auto &[name, shown, words] : cases) {
        std::string expected = "quarl: Can't open database ";
        ((expected += shown) += ": ") += words;
        EXPECT_EQ(run(QUARL_PROGRAM, {"-d", name}, STDIN_FILENO).err, expected + "\n");
    }
}

/// A server that asks for the password and repeats it in its refusal.
class Parrot
{
public:
    explicit Parrot(const std::string &path)
    {
        sockaddr_un address = {AF_UNIX, ""};
        path.copy(address.sun_path, sizeof address.sun_path - 1);
        if (bind(listener_, reinterpret_cast<const sockaddr *>(&address), sizeof address) != 0 ||
            listen(listener_, 1) != 0)
            throw std::system_error(errno, std::generic_category(), path);
        thread_ = std::thread([this] { serve(); });
    }
    Parrot(const Parrot &) = delete;
    Parrot &operator=(const Parrot &) = delete;
    ~Parrot()
    {
        shutdown(listener_, SHUT_RDWR);
        thread_.join();
        close(listener_);
    }

    std::string heard; ///< the last password; to be read when its client has been refused

private:
    void serve()
    {
        std::array<char, 4096> bytes{};
        for (int client = 0; (client = accept4(listener_, nullptr, nullptr, SOCK_CLOEXEC)) >= 0;) {
            (void)recv(client, bytes.data(), bytes.size(), 0);
            (void)write_all(client, {"R\0\0\0\x08\0\0\0\x03", 9});
            const ssize_t size = recv(client, bytes.data(), bytes.size() - 1, 0);
            heard.assign(bytes.data() + 5, size > 6 ? size - 6 : 0); // type, length, text, 0
            std::string fields("SFATAL\0VFATAL\0C28P01\0MI know ", 29);
            fields += heard + ": no \"-" + heard + "-\", \"x" + heard + "\"";
            fields.append(2, '\0');
            const std::string head = {'E', 0, 0, 0, static_cast<char>(fields.size() + 4)};
            (void)write_all(client, head + fields);
            close(client);
        }
    }

    int listener_ = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    std::thread thread_;
};

TEST_F(DbTest, PasswordsReachTheServerAlone)
{
    Parrot parrot(path(".s.PGSQL.5432"));
    std::string host;
    for (const char c : directory_)
        host += c == '/' ? "%2F" : std::string(1, c);
    const std::string refused =
        "connection to server on socket \"" + path(".s.PGSQL.5432") + "\" failed: FATAL:  I know ";
    const std::string masked = refused + "***: no \"-***-\", \"***\"";
    const struct {
        std::string front, parameters, password, words;
    } cases[] = {
        {"u:sesame@", "", "sesame", masked},
        {"u:s%65s%40me@", "", "ses@me", masked},
        {"u:se@s:a me@", "", "se@s:a me", masked},
        {"u:s?a me@", "", "s?a me", masked},
        {"u:50%@", "", "50%", masked},
        {"u:first@", "?password=s%26c%6fnd", "s&cond", masked},
        {"", "?user=u&password=a&b=c&d&connect_timeout=9", "a", ""},
        {"", "?user=u&password=a&b&connect_timeout=9", "a&b", masked},
        {"fail:fail@", "", "fail", refused + "fail: no \"-fail-\", \"xfail\""},
    };
    for (const auto &[front, parameters, password, words] : cases) {
        parrot.heard.clear();
        std::string url = "postgresql://" + front;
        ((url += host) += "/x") += parameters;
        const std::string shown = outcome(url);
        if (words.empty()) {
            EXPECT_EQ(shown, Unopened + "invalid URI query parameter: \"b\"\n");
            continue;
        }
        EXPECT_EQ(shown, Unopened + words + "\n");
        EXPECT_EQ(parrot.heard, password);
    }
}

} // namespace
