#pragma once

#include <streambuf>
#include <string>

namespace boardctl {

/// Remembers why a write to standard output failed, for the message of `flushOutput`: a stream does
/// not keep the reason. Create one object; it must exist as long as the program prints.
class OutputWatch : private std::streambuf {
public:
    OutputWatch();
    ~OutputWatch() override;
    OutputWatch(const OutputWatch&) = delete;
    OutputWatch& operator=(const OutputWatch&) = delete;

private:
    int_type overflow(int_type character) override;
    std::streamsize xsputn(const char* text, std::streamsize size) override;
    int sync() override;

    std::streambuf* const m_output;
};

/// Prints a message on standard error.
void complain(const std::string& what);

/// Flushes standard output. False if not everything could be written; the first such call prints a
/// message on standard error.
bool flushOutput();

} // namespace boardctl
