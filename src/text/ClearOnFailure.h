/// \file
/// Clears a string or a map that an operation fills, if the operation fails midway.
#pragma once

namespace vorel::text {

template <class Container>
class ClearOnFailure {
public:
    explicit ClearOnFailure(Container& output) noexcept : m_output(&output) {}
    ~ClearOnFailure() {
        if (m_output) {
            m_output->clear();
        }
    }

    ClearOnFailure(const ClearOnFailure&) = delete;
    ClearOnFailure& operator=(const ClearOnFailure&) = delete;

    /// Call this when the operation has succeeded. The output is then kept.
    void done() noexcept { m_output = nullptr; }

private:
    Container* m_output;
};

}  // namespace vorel::text
