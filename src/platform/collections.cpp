#include "platform/collections.h"

#include <algorithm>
#include <climits>
#include <cstring>

CPtrArray::~CPtrArray() {
    delete[] m_pData;
}

void CPtrArray::SetSize(int newSize, int growBy) {
    assert(newSize >= 0);
    if (growBy >= 0) m_nGrowBy = growBy;
    if (newSize <= 0) {
        delete[] m_pData;
        m_pData = nullptr;
        m_nSize = m_nMaxSize = 0;
        return;
    }
    if (newSize <= m_nMaxSize) {
        if (newSize > m_nSize) {
            std::fill(m_pData + m_nSize, m_pData + newSize, nullptr);
        }
        m_nSize = newSize;
        return;
    }
    // Grow by at least the grow-by step; with no step set, by an eighth of the
    // current size between 4 and 1024, so that repeated Add stays amortised.
    int step = m_nGrowBy;
    if (step == 0) step = std::clamp(m_nSize / 8, 4, 1024);
    const long long wanted =
        std::max<long long>(newSize, static_cast<long long>(m_nMaxSize) + step);
    const int capacity = static_cast<int>(std::min<long long>(wanted, INT_MAX));
    void** data = new void*[static_cast<size_t>(capacity)];
    if (m_nSize > 0) std::memcpy(data, m_pData, sizeof(void*) * static_cast<size_t>(m_nSize));
    std::fill(data + m_nSize, data + capacity, nullptr);
    delete[] m_pData;
    m_pData = data;
    m_nSize = newSize;
    m_nMaxSize = capacity;
}

void CPtrArray::FreeExtra() {
    if (m_nSize == m_nMaxSize) return;
    if (m_nSize == 0) {
        SetSize(0);
        return;
    }
    void** data = new void*[static_cast<size_t>(m_nSize)];
    std::memcpy(data, m_pData, sizeof(void*) * static_cast<size_t>(m_nSize));
    delete[] m_pData;
    m_pData = data;
    m_nMaxSize = m_nSize;
}

void CPtrArray::SetAtGrow(int index, void* element) {
    assert(index >= 0);
    if (index >= m_nSize) SetSize(index + 1);
    m_pData[index] = element;
}

void CPtrArray::InsertAt(int index, void* element, int count) {
    assert(index >= 0 && count >= 0);
    if (count <= 0) return;
    if (index >= m_nSize) {
        SetSize(index + count);
    } else {
        const int oldSize = m_nSize;
        SetSize(m_nSize + count);
        std::memmove(m_pData + index + count, m_pData + index,
                     sizeof(void*) * static_cast<size_t>(oldSize - index));
    }
    std::fill(m_pData + index, m_pData + index + count, element);
}

void CPtrArray::RemoveAt(int index, int count) {
    assert(index >= 0 && count >= 0 && index + count <= m_nSize);
    const int moved = m_nSize - index - count;
    if (moved > 0) {
        std::memmove(m_pData + index, m_pData + index + count,
                     sizeof(void*) * static_cast<size_t>(moved));
    }
    m_nSize -= count;
}
