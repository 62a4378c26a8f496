#include "host/exceptions.h"
#include "host/lexical_cast.h"

#include <gtest/gtest.h>

#include <charconv>
#include <cstdint>
#include <string>

using namespace veltra;

namespace {

/// The value, as its shortest text, or the failure's.
template <class T>
std::string outcome(const std::string& text) {
    try {
        char value[32];
        return {value, std::to_chars(value, value + sizeof value, lexical_cast<T>(text)).ptr};
    } catch (const bad_lexical_cast& exception) {
        return "no number: " + std::string(exception.what());
    } catch (const bad_numeric_cast& exception) {
        return "no room: " + std::string(exception.what());
    }
}

/// Texts that a conversion takes, with the values, and texts that it refuses as beyond its range and as no number.
template <class T>
void check(std::initializer_list<std::pair<const char*, const char*>> taken, std::initializer_list<const char*> beyond,
           std::initializer_list<const char*> refused) {
    for (const auto& [text, value] : taken)
        EXPECT_EQ(outcome<T>(text), value) << text;
    for (const std::string text : beyond)
        EXPECT_TRUE(outcome<T>(text).starts_with("no room: \"" + text + '"')) << text << ": " << outcome<T>(text);
    for (const std::string text : refused)
        EXPECT_TRUE(outcome<T>(text).starts_with("no number: \"" + text + '"')) << text << ": " << outcome<T>(text);
}

TEST(LexicalCast, ReadsIntegers) {
    check<std::int8_t>({{"-128", "-128"}, {"127", "127"}, {"+5", "5"}, {"-0", "0"}, {"007", "7"}},
                       {"128", "-129", "+999"}, {"", "+", "-", "+-5", "-+5", "++5", "--5", " 5", "5 ", "5.0", "A"});
    check<std::int16_t>({{"-32768", "-32768"}}, {"32768"}, {"0x10"});
    check<std::int32_t>({{"-2147483648", "-2147483648"}}, {"2147483648"}, {"1e3"});
    check<std::int64_t>({{"-9223372036854775808", "-9223372036854775808"}}, {"9223372036854775808"}, {"9999999x"});
    check<std::uint8_t>({{"255", "255"}, {"+255", "255"}, {"-0", "0"}, {"-00", "0"}}, {"256", "-1", "-999"},
                        {"", "-", "--1", "-1x", "+-1", "-+1"});
    check<std::uint16_t>({{"65535", "65535"}}, {"65536"}, {"-0.0"});
    check<std::uint32_t>({{"4294967295", "4294967295"}}, {"4294967296"}, {"1,5"});
    check<std::uint64_t>({{"18446744073709551615", "18446744073709551615"}}, {"18446744073709551616"}, {"nan"});
}

TEST(LexicalCast, ReadsFloatingPointNumbersAndTakesTooSmallOnesAsZeroOfTheirSign) {
    check<double>(
        {{"+1.5e-3", "0.0015"}, {"-.5", "-0.5"}, {"2.", "2"}, {"1E5", "1e+05"}, {"-0", "-0"}},
        {"1e309", "-1e99999999999999999999"},
        {"", "+", ".", "e5", "1e", "1e+", "+-5", "+-nan", "1.5.", "0x1p3", "1 ", " 1", "1,5", "in", "1e309x"});
    check<double>({{"inf", "inf"}, {"-INF", "-inf"}, {"+Infinity", "inf"}}, {}, {"infi"});
    check<double>({{"5e-324", "5e-324"}, {"1e-400", "0"}, {"-1e-400", "-0"}, {"0.0e-99999999999", "0"}}, {}, {});
    check<float>({{"3.4028235e38", "3.4028235e+38"}}, {"3.5e38", "+1e39", "-1e400"}, {"one"});
    check<float>({{"nan", "nan"}, {"-nan", "-nan"}, {"NaN", "nan"}, {"+NAN", "nan"}}, {}, {"nano"});
    check<float>({{"1e-45", "1e-45"}, {"1e-46", "0"}, {"-1e-60", "-0"}, {"+1e-400", "0"}}, {}, {});
}

TEST(LexicalCast, NamesTextAndRangeInItsSentences) {
    EXPECT_EQ(outcome<float>("1e39"), "no room: \"1e39\" is not in the range from -3.4028235e+38 to 3.4028235e+38");
    EXPECT_EQ(outcome<std::int8_t>("1.5"), "no number: \"1.5\" is not a whole number");
    const std::string longest(80, 'x');
    EXPECT_EQ(outcome<double>(longest), "no number: \"" + longest + "\" is not a number");
    EXPECT_EQ(outcome<double>(longest + 'x'), "no number: \"" + longest + "...\" is not a number");
}

} // namespace
