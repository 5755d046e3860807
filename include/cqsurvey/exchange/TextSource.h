#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "cqsurvey/exchange/Export.h"

namespace cqsurvey::exchange {

/// The bytes of a text file in order, without a UTF-8 byte-order mark at the front. The source
/// counts the lines as it hands them out. The reader of the lines counts them as well, and when
/// both agree, no line was lost. To read from elsewhere, derive a class and define ReadSome.
class CQSURVEY_EXCHANGE_API TextSource {
 public:
    /// `name` is what messages call it. UTF-8 is shown as it is, other bytes as \x and their
    /// number.
    explicit TextSource(std::string name) : m_name(std::move(name)) {}
    TextSource(const TextSource&) = delete;
    TextSource& operator=(const TextSource&) = delete;
    virtual ~TextSource() = default;

    [[nodiscard]] const std::string& GetName() const { return m_name; }

    /// Appends more bytes to `buffer`; false at the end of the text. Throws ExchangeError when they
    /// cannot be read, or when their byte-order mark is that of UTF-16 and nobody accepted it; do
    /// not use what was appended then.
    bool Read(std::string& buffer);

    /// Says before the first Read that its reader knows UTF-16. Such a mark is handed out then.
    void AcceptUtf16() { m_utf16 = true; }

    /// The number of lines read so far. A line ends with CR LF, LF or CR; what follows the last
    /// line end counts as a line.
    [[nodiscard]] std::uint64_t GetLines() const { return m_lines + (m_openLine ? 1U : 0U); }

    /// The bytes read so far.
    [[nodiscard]] std::uint64_t GetBytes() const { return m_bytes; }

    /// The size of the whole text in bytes, when it is known.
    [[nodiscard]] virtual std::optional<std::uint64_t> GetSize() const { return std::nullopt; }

    /// True when the first bytes were the UTF-8 byte-order mark. Call it after the first Read.
    [[nodiscard]] bool HasMark() const { return m_hasMark; }

 private:
    /// Appends at least one byte to `buffer`, or nothing at the end of the text. May throw
    /// anything.
    virtual void ReadSome(std::string& buffer) = 0;

    void Count(std::string_view bytes);

    std::string m_name;
    std::uint64_t m_lines = 0;
    std::uint64_t m_bytes = 0;
    bool m_started = false;
    bool m_hasMark = false;
    bool m_utf16 = false;
    bool m_openLine = false;
    bool m_afterReturn = false;
};

/// A file of the host, or standard input.
class CQSURVEY_EXCHANGE_API FileSource : public TextSource {
 public:
    /// "-" is standard input. `check` is called before each wait for bytes, and again when a signal
    /// ended the wait; what it throws, Read throws. It is also called when a signal ended the wait
    /// for the other end of a pipe, here. Throws ExchangeError when the file cannot be opened. A
    /// folder can be opened, but its first Read throws.
    explicit FileSource(const std::string& path, std::function<void()> check = {});
    FileSource(const FileSource&) = delete;
    FileSource& operator=(const FileSource&) = delete;
    ~FileSource() override;

    [[nodiscard]] std::optional<std::uint64_t> GetSize() const override { return m_size; }

 private:
    void ReadSome(std::string& buffer) override;
    void Check() const;

    /// The open file of the system.
    struct File;

    std::function<void()> m_check;
    std::unique_ptr<File> m_file;
    std::optional<std::uint64_t> m_size;
};

/// A text in memory, handed out in pieces of at most `piece` bytes. The text must outlive the
/// source.
class CQSURVEY_EXCHANGE_API StringSource : public TextSource {
 public:
    explicit StringSource(std::string_view text, std::size_t piece = 65536);

    [[nodiscard]] std::optional<std::uint64_t> GetSize() const override { return m_text.size(); }

 private:
    void ReadSome(std::string& buffer) override;

    std::string_view m_text;
    std::size_t m_piece;
    std::size_t m_position = 0;
};

}  // namespace cqsurvey::exchange
