#include "vexil/exceptions.h"

#include <type_traits>

#include <gmock/gmock.h>

using namespace vexil;

template <template <typename...> class List>
using Family = List<Exception, InvalidArgument, EncodingError, FormatLimitExceeded, Overflow,
                    JsonParserError, UnsupportedFunction, NotImplemented>;
template <typename... Classes>
struct Handlers {
    template <typename Thrown>
    static constexpr int count = (std::is_convertible_v<Thrown*, Classes*> + ...);
};

template <typename Thrown>
class ExceptionFamily : public testing::Test {};
TYPED_TEST_SUITE(ExceptionFamily, Family<testing::Types>);

TYPED_TEST(ExceptionFamily, KeepsItsMessageAndIsCaughtByItsBasesOnly) {
    const char* const message = "StringOutputStream::write(): invalid argument aLen";
    const auto throwCopy = [&] {
        const TypeParam original(message);
        throw TypeParam(original);
    };
    EXPECT_THAT(throwCopy, testing::ThrowsMessage<std::runtime_error>(message));
    const int handlers = std::is_same_v<TypeParam, Exception> ? 1 : 2; // itself and Exception
    EXPECT_EQ(Family<Handlers>::count<TypeParam>, handlers);
}
