#include "peer/preset.h"

#include <algorithm>

namespace core_utils {

using namespace hxl_config_handler;
using eOutcome = CPeerSegment::eOutcome;
using sResult = CPeerSegment::sResult;

namespace {

const sPresetMemory* memoryOf(int number) {
    const auto* memory = std::find_if(std::begin(PRESET_MEMORIES), std::end(PRESET_MEMORIES),
                                      [&](const auto& row) { return row.number == number; });
    return memory != std::end(PRESET_MEMORIES) ? memory : nullptr;
}

sResult noMemory(int number) {
    return {eOutcome::UNKNOWN_OBJECT, "there is no preset memory " + std::to_string(number)};
}

template <typename T, std::size_t COUNT>
void addFields(std::vector<sPresetField>& fields, const sPresetSetting<T> (&settings)[COUNT],
               int object) {
    for (std::size_t i = 0; i < COUNT; ++i)
        fields.push_back({settings[i].key, settings[i].unit, objectOf(object), i * CHANNEL_COUNT});
}

template <typename Element, typename T, std::size_t COUNT>
std::vector<Element> elementsOf(const sPresetBlock& block,
                                const sPresetSetting<T> (&settings)[COUNT]) {
    std::vector<Element> elements;
    for (const auto& setting : settings) {
        for (const T value : block.*setting.values)
            elements.push_back(value);
    }
    return elements;
}

}  // namespace

std::vector<sPresetField> presetFields(int number) {
    std::vector<sPresetField> fields;
    if (const auto* memory = memoryOf(number)) {
        addFields(fields, PRESET_NUMBERS, memory->numericObject);
        addFields(fields, PRESET_STATES, memory->stateObject);
    }
    return fields;
}

sResult readPreset(const CPeerSegment& segment, int number, sPresetBlock& block) {
    const auto* memory = memoryOf(number);
    if (memory == nullptr) return noMemory(number);
    std::vector<double> numbers;
    std::vector<unsigned char> states;
    sResult result = segment.read(memory->numericObject, numbers);
    if (result) result = segment.read(memory->stateObject, states);
    if (!result) return result;
    block = {};
    for (std::size_t i = 0; i < numbers.size(); ++i)
        setElement(block, PRESET_NUMBERS, i, numbers[i]);
    for (std::size_t i = 0; i < states.size(); ++i)
        setElement(block, PRESET_STATES, i, states[i]);
    return {};
}

sResult writePreset(CPeerSegment& segment, int number, const sPresetBlock& block) {
    const auto* memory = memoryOf(number);
    if (memory == nullptr) return noMemory(number);
    const sResult result =
        segment.write(memory->numericObject, elementsOf<double>(block, PRESET_NUMBERS));
    if (!result) return result;
    return segment.write(memory->stateObject, elementsOf<unsigned char>(block, PRESET_STATES));
}

sResult setPreset(CPeerSegment& segment, int number, const std::string& key, int channel,
                  double value) {
    const std::vector<sPresetField> fields = presetFields(number);
    if (fields.empty()) return noMemory(number);
    const auto field =
        std::find_if(fields.begin(), fields.end(), [&](const auto& row) { return key == row.key; });
    if (field == fields.end()) {
        return {eOutcome::UNKNOWN_OBJECT, "a preset has no setting \"" + key + '"'};
    }
    if (channel < 1 || channel > static_cast<int>(CHANNEL_COUNT)) {
        return {eOutcome::NO_ELEMENT, "a preset has no channel " + std::to_string(channel)};
    }
    const std::size_t index = field->index + static_cast<std::size_t>(channel) - 1;
    if (field->object->element == eElement::DOUBLE) {
        return segment.set<double>(field->object->id, index, value);
    }
    const auto state = value >= 0 && value <= 255 ? static_cast<unsigned char>(value) : 0;
    if (state != value) {
        return {eOutcome::TYPE_MISMATCH, key + " is a whole number from 0 to 255"};
    }
    return segment.set<unsigned char>(field->object->id, index, static_cast<unsigned char>(state));
}

}  // namespace core_utils
