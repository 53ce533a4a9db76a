// The exception types of the QzCommon library.
//
// They are thrown as heap objects, by pointer (`throw new ...`), and the
// catcher owns what it caught. Other modules of the product catch them by
// pointer too, so the shape (pointer, fields, source-file strings) is kept.
// Inside this code base a thrown pointer goes straight into an owner:
//
//     auto error = QzCommon::Capture<QzCommon::Storage::Exception>([&] { ... });
//     if (error) VELK_LOG(L"... %u", error->m_dwErrorCode);
//
// or, in a handwritten catch clause, `auto error = QzCommon::Own(raw);` as the
// first statement. Either way nothing leaks.
//
// No <windows.h> here: the string helpers that throw are built natively too.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <utility>

namespace QzCommon {

namespace Exception {

class Base {
public:
    Base() noexcept = default;
    explicit Base(std::uint32_t errorCode) noexcept : m_dwErrorCode(errorCode) {}
    virtual ~Base() = default;

    // A Win32 error code.
    std::uint32_t m_dwErrorCode = 0;
};

}  // namespace Exception

namespace Storage {
class Exception : public QzCommon::Exception::Base {
public:
    Exception(std::uint32_t errorCode, const char* sourceFile, std::uint32_t sourceLine)
        : Base(errorCode),
          m_dwSourceLine(sourceLine),
          m_strSourceFile(sourceFile ? sourceFile : "") {}

    std::uint32_t m_dwSourceLine = 0;
    std::string m_strSourceFile;  // the module's relative source path, no extension
};
}  // namespace Storage

namespace String {
class Exception : public QzCommon::Exception::Base {
public:
    Exception(std::uint32_t errorCode, const char* sourceFile, std::uint32_t sourceLine)
        : Base(errorCode),
          m_dwSourceLine(sourceLine),
          m_strSourceFile(sourceFile ? sourceFile : "") {}

    std::uint32_t m_dwSourceLine = 0;
    std::string m_strSourceFile;  // the module's relative source path, no extension
};
}  // namespace String

namespace AccessControl {
class Exception : public QzCommon::Exception::Base {
public:
    Exception(std::uint32_t errorCode, const char* sourceFile, std::uint32_t sourceLine)
        : Base(errorCode),
          m_dwSourceLine(sourceLine),
          m_strSourceFile(sourceFile ? sourceFile : "") {}

    std::uint32_t m_dwSourceLine = 0;
    std::string m_strSourceFile;  // the module's relative source path, no extension
};
}  // namespace AccessControl

// Takes ownership of a caught exception pointer.
template <class E>
std::unique_ptr<E> Own(E* raw) noexcept {
    return std::unique_ptr<E>(raw);
}

// Runs `body`; an `E*` it throws comes back owned, anything else propagates.
// Empty when the body finished normally.
template <class E, class F>
std::unique_ptr<E> Capture(F&& body) {
    try {
        std::forward<F>(body)();
    } catch (E* raw) {
        return Own(raw);
    }
    return nullptr;
}

}  // namespace QzCommon

// Throws one of the library's exceptions with the line of the throwing
// statement; each source file defines its own `kSourceFile`.
#define QZ_THROW(ExceptionType, errorCode) \
    throw new ExceptionType(static_cast<std::uint32_t>(errorCode), kSourceFile, __LINE__)
