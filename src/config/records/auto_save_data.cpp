#include "config/records/auto_save_data.h"

#include <algorithm>
#include <cstdio>
#include <type_traits>

namespace hxl_config_handler {

namespace {

void printValue(double value) {
    std::printf("%f ", value);
}
void printValue(unsigned char value) {
    std::printf("%d ", value);
}
void printValue(const std::string& value) {
    std::printf("%s ", value.c_str());
}

}  // namespace

template <typename T>
void PrintValues(const std::vector<T>& values) {
    for (const T& value : values)
        printValue(value);
}

template <typename T>
bool CConfAutoSaveData<T>::IsEqual(const CConfAutoSaveData& other) const {
    if constexpr (std::is_same_v<T, unsigned char>) {
        return mValues == other.mValues;
    } else {
        return other.mValues.size() <= mValues.size() &&
               std::equal(other.mValues.begin(), other.mValues.end(), mValues.begin());
    }
}

template <typename T>
void CConfAutoSaveData<T>::PrintConfData() const {
    constexpr bool BYTES = std::is_same_v<T, unsigned char>;
    std::printf(BYTES ? "CNFKEY:%s CONF INDEX %d \n" : "CNFKEY:%s CONF INDEX %d \n\n",
                GetKey().c_str(), GetIndex());
    PrintValues(mValues);
    std::printf(BYTES ? "\n " : "\n\n ");
}

template class CConfAutoSaveData<double>;
template class CConfAutoSaveData<unsigned char>;
template class CConfAutoSaveData<std::string>;
template void PrintValues(const std::vector<double>&);
template void PrintValues(const std::vector<unsigned char>&);
template void PrintValues(const std::vector<std::string>&);

}  // namespace hxl_config_handler
