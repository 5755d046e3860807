#pragma once

#include <cstdio>
#include <memory>
#include <stdexcept>
#include <string>

#include "cqjob/Console.h"

namespace cqsurvey::cqjob {

/// A console whose words can be read back.
class CapturedConsole {
 public:
    explicit CapturedConsole(bool terminal = false)
        : m_out(Open()), m_err(Open()), console(m_out.get(), m_err.get(), terminal) {}
    CapturedConsole(const CapturedConsole&) = delete;
    CapturedConsole& operator=(const CapturedConsole&) = delete;
    ~CapturedConsole() = default;

    [[nodiscard]] std::string Out() const { return ReadAll(m_out.get()); }
    [[nodiscard]] std::string Err() const { return ReadAll(m_err.get()); }

 private:
    struct Close {
        void operator()(std::FILE* file) const { std::fclose(file); }
    };
    using File = std::unique_ptr<std::FILE, Close>;

    static File Open() {
        File file(std::tmpfile());
        if (file == nullptr) {
            throw std::runtime_error("no temporary file");
        }
        return file;
    }
    static std::string ReadAll(std::FILE* file) {
        std::fflush(file);
        std::rewind(file);
        std::string text;
        for (int c = std::fgetc(file); c != EOF; c = std::fgetc(file)) {
            text += static_cast<char>(c);
        }
        return text;
    }

    File m_out;
    File m_err;

 public:
    Console console;
};

}  // namespace cqsurvey::cqjob
