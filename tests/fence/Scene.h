#pragma once

#include "fence/Attempts.h"
#include "fence/InterpreterLocation.h"
#include "fence/LandlockRuleset.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>
#include <map>
#include <string>

#include <netinet/in.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

/// What attempts are made on: files of a user, and sockets that listen.
class Scene
{
public:
    Scene()
    {
        for (const char* name : {"document", "secret", "neighbour"}) {
            m_arguments[name] = m_folder.write(name, "content");
        }
        std::filesystem::copy_file("/bin/true", m_arguments["document"],
                                   std::filesystem::copy_options::overwrite_existing);
        m_arguments["folder"] = m_folder.path("");
        m_arguments["new"] = m_folder.path("new");
        m_arguments["loader"] = InterpreterLocation(QStringLiteral("true")).loader();
        listenOnTcp();
        listenOnUnix("unix", m_folder.path("socket"));
        listenOnUnix("abstract", "@morvaltide-test-" + std::to_string(getpid()));
        giveAway();
    }

    ~Scene()
    {
        for (const int socket : m_sockets) {
            close(socket);
        }
    }

    Scene(const Scene&) = delete;
    Scene& operator=(const Scene&) = delete;

    /// `text` with names in braces replaced: "{secret}" is the path of the file.
    std::string argument(std::string text) const
    {
        for (const auto& [name, value] : m_arguments) {
            const std::string word = '{' + name + '}';
            const std::string::size_type position = text.find(word);
            if (position != std::string::npos) {
                text.replace(position, word.size(), value);
            }
        }
        return text;
    }

    /// Whether an ordinary user can be played and can run the test programs.
    static bool canPlayOrdinaryUser()
    {
        return geteuid() == 0 && Attempts::statusOf([] {
                                     Attempts::Surroundings surroundings;
                                     surroundings.isOrdinaryUser = true;
                                     Attempts::prepare(surroundings);
                                     return access(MORVALTIDE_CONQUERED_PROGRAM, X_OK);
                                 }) == 0;
    }

private:
    void listenOnTcp()
    {
        sockaddr_in address = {};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t size = sizeof address;
        const int descriptor = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
        auto* generic = reinterpret_cast<sockaddr*>(&address);
        EXPECT_EQ(bind(descriptor, generic, size), 0);
        EXPECT_EQ(listen(descriptor, backlog), 0);
        EXPECT_EQ(getsockname(descriptor, generic, &size), 0);
        m_arguments["port"] = std::to_string(ntohs(address.sin_port));
        m_sockets.push_back(descriptor);
    }

    // A name that begins with '@' is abstract.
    void listenOnUnix(const char* key, const std::string& name)
    {
        sockaddr_un address = {};
        address.sun_family = AF_UNIX;
        std::memcpy(address.sun_path, name.data(), name.size());
        if (name[0] == '@') {
            address.sun_path[0] = '\0';
        }
        const int descriptor = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
        EXPECT_EQ(bind(descriptor, reinterpret_cast<const sockaddr*>(&address),
                       static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + name.size())),
                  0);
        EXPECT_EQ(listen(descriptor, backlog), 0);
        m_arguments[key] = name;
        m_sockets.push_back(descriptor);
    }

    // The ordinary user owns everything, so that nothing but the fence stops it.
    void giveAway() const
    {
        if (geteuid() != 0) {
            return;
        }
        const std::string folder = m_folder.path("");
        EXPECT_EQ(chown(folder.c_str(), Attempts::ordinaryUser, Attempts::ordinaryUser), 0);
        for (const auto& entry : std::filesystem::directory_iterator(folder)) {
            EXPECT_EQ(chown(entry.path().c_str(), Attempts::ordinaryUser, Attempts::ordinaryUser),
                      0);
        }
    }

    static constexpr int backlog = 16;

    TemporaryFolder m_folder;
    std::map<std::string, std::string> m_arguments;
    std::vector<int> m_sockets;
};
