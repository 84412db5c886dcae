#include "vexil/exceptions.h"

#include <gmock/gmock.h>

using namespace vexil;

template <typename... Classes>
struct Handlers {
    template <typename Thrown>
    static constexpr int count = (std::is_convertible_v<Thrown*, Classes*> + ...);
};
template <template <typename...> class List>
using Family = List<InvalidArgument, EncodingError, FormatLimitExceeded, Overflow, JsonParserError,
                    UnsupportedFunction, NotImplemented>;
template <typename Thrown>
class ExceptionFamily : public testing::Test {};
TYPED_TEST_SUITE(ExceptionFamily, Family<testing::Types>);

TYPED_TEST(ExceptionFamily, KeepsItsMessageAndIsNotCaughtByItsSiblings) {
    EXPECT_THAT([] { throw TypeParam("a(): b"); }, testing::ThrowsMessage<Exception>("a(): b"));
    EXPECT_EQ(Family<Handlers>::count<TypeParam>, 1);
}
