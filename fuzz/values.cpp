// Values of each element type as each stored type, one component of tuples, against converting them one by one in a
// type that holds all. The first bytes are the types, the numbers of components and byte order.

#include "fuzz/fuzz.h"

#include "loader/streams/elementTypes.h"
#include "loader/streams/readValues.h"

#include "loader/sdk/ByteInputStream.h"

#include <cmath>
#include <limits>
#include <type_traits>
#include <vector>

namespace {

using namespace veltra::vtkfile;
__extension__ using Wide = __int128;

struct Setting {
    std::uint16_t componentCount;
    std::uint16_t component;
    bool bigEndian;
    bool isText;
};

template <class Dst, class Src>
Dst convertSlowly(Src value) {
    if constexpr (std::is_floating_point_v<Dst>) {
        return static_cast<Dst>(static_cast<long double>(value)); // which holds every value of every type
    } else if constexpr (std::is_floating_point_v<Src>) {
        const bool fits = value >= -2147483648.0 && value < 2147483648.0;
        return static_cast<Dst>(fits ? static_cast<Wide>(std::trunc(value)) : Wide{std::numeric_limits<int>::min()});
    } else {
        return static_cast<Dst>(static_cast<Wide>(value));
    }
}

template <class Src>
std::vector<Src> valuesIn(fuzz::Bytes bytes, bool bigEndian) {
    std::vector<Src> values(bytes.size() / sizeof(Src));
    for (std::size_t index = 0; index < values.size(); ++index) {
        std::array<std::uint8_t, sizeof(Src)> one;
        std::ranges::copy(bytes.subspan(index * sizeof(Src), sizeof(Src)), one.begin());
        if (bigEndian)
            std::ranges::reverse(one);
        std::memcpy(&values[index], one.data(), sizeof(Src));
    }
    return values;
}

template <class Src>
std::string textOf(const std::vector<Src>& values) {
    std::string text;
    for (const Src value : values) {
        std::array<char, 64> number;
        text.append(number.data(), std::to_chars(number.begin(), number.end(), value).ptr) += ' ';
    }
    return text;
}

template <class Dst, class Src>
void check(fuzz::Bytes bytes, const Setting& setting) {
    using veltra::dataio::ByteInputStream;
    const std::vector<Src> values = valuesIn<Src>(bytes, setting.bigEndian);
    const std::size_t tupleCount = values.size() / setting.componentCount;
    std::vector<Dst> expected;
    for (std::size_t tuple = 0; tuple < tupleCount && setting.component < setting.componentCount; ++tuple)
        expected.push_back(convertSlowly<Dst>(values[tuple * setting.componentCount + setting.component]));

    const std::string text = setting.isText ? textOf(values) : std::string(fuzz::asText(bytes));
    StreamReader reader(
        std::make_shared<ByteInputStream>(std::make_shared<ByteInputStream::Bytes>(text.begin(), text.end())),
        !setting.isText, setting.bigEndian);
    std::vector<Dst> read(expected.size());
    reader.readValues<Dst, Src>(read.data(), tupleCount, static_cast<short>(setting.componentCount),
                                static_cast<short>(setting.component));
    const auto isSame = [](Dst left, Dst right) { return left == right || (left != left && right != right); };
    fuzz::require(std::ranges::equal(read, expected, isSame), "values are converted plainly");
}

template <class Src>
void checkStored(std::uint8_t storedType, fuzz::Bytes bytes, const Setting& setting) {
    switch (storedType % 5) {
    case 0:
        return check<std::uint8_t, Src>(bytes, setting);
    case 1:
        return check<std::int16_t, Src>(bytes, setting);
    case 2:
        return check<std::int32_t, Src>(bytes, setting);
    case 3:
        return check<float, Src>(bytes, setting);
    default:
        return check<double, Src>(bytes, setting);
    }
}

} // namespace

std::string fuzz::outcome(Bytes bytes) {
    Input input(bytes);
    const auto type = static_cast<DataArrayType>(input.byte() % dataArrayTypeCount);
    const std::uint8_t storedType = input.byte();
    const std::uint8_t form = input.byte();
    const auto componentCount = static_cast<std::uint16_t>(1 + input.byte() % 9);
    const auto component = static_cast<std::uint16_t>(input.byte() % (componentCount + 1));
    visitElementType(type, [&]<class Src>(std::type_identity<Src>) {
        checkStored<Src>(storedType, input.rest(), {componentCount, component, form % 2 == 1, form / 2 % 2 == 1});
    });
    return std::to_string(static_cast<int>(type)) + " as " + std::to_string(storedType % 5);
}
