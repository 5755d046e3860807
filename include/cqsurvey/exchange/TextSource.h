#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "cqsurvey/exchange/Export.h"

namespace cqsurvey::exchange {

/// The bytes of a text file, one after the other, without a UTF-8 byte-order mark at the front.
/// Counts the lines that go by. Whoever makes sense of the lines counts them too, and when both
/// agree no line was lost. A source of another kind derives from it and defines ReadSome.
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
    /// cannot be read, or are UTF-16 by their byte-order mark; what was appended then is of no use.
    bool Read(std::string& buffer);

    /// The lines read so far, ended by CR LF, LF or CR, and what follows the last line end.
    [[nodiscard]] std::uint64_t GetLines() const { return m_lines + (m_openLine ? 1U : 0U); }

    /// The bytes read so far.
    [[nodiscard]] std::uint64_t GetBytes() const { return m_bytes; }

    /// The bytes of the whole text, where that is known.
    [[nodiscard]] virtual std::optional<std::uint64_t> GetSize() const { return std::nullopt; }

    /// True when the first bytes were the UTF-8 byte-order mark. To be asked after the first Read.
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
    bool m_openLine = false;
    bool m_afterReturn = false;
};

/// A file of the host, or standard input.
class CQSURVEY_EXCHANGE_API FileSource : public TextSource {
 public:
    /// "-" names standard input. `check` is called before each wait for bytes, also when a signal
    /// ended the wait; what it throws comes through Read. Throws ExchangeError when the file cannot
    /// be opened; a folder fails at the first Read.
    explicit FileSource(const std::string& path, std::function<void()> check = {});
    FileSource(const FileSource&) = delete;
    FileSource& operator=(const FileSource&) = delete;
    ~FileSource() override;

    [[nodiscard]] std::optional<std::uint64_t> GetSize() const override { return m_size; }

 private:
    void ReadSome(std::string& buffer) override;

    std::function<void()> m_check;
    std::optional<std::uint64_t> m_size;
    int m_descriptor = -1;
};

/// A text in memory, handed out in pieces of at most `piece` bytes. The text must outlive it.
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
