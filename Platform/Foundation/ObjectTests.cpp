#include "Platform/Foundation/Object.h"

#include "Platform/Foundation/Array.h"
#include "Platform/Foundation/Number.h"
#include "Platform/Foundation/String.h"
#include "Platform/Foundation/Testing/RaisedException.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <set>
#include <sstream>
#include <string>
#include <string_view>

namespace {

class Animal : public NS::Object {
    NS_OBJECT(Animal)
  public:
    void feed() {}
};

class Cat final : public Animal {
    NS_OBJECT(Cat)
  public:
    void scratch(NS::RefPtr<NS::Object>) {}
};

constexpr NS::Method kAnimalMethods[] = {NS::method<&Animal::feed>("feed")};
constexpr NS::Method kCatMethods[] = {NS::method<&Cat::scratch>("scratch:")};

constinit const NS::Class Animal::kClass{
    .name = "Animal", .superclass = &NS::Object::kClass, .methods = kAnimalMethods};
constinit const NS::Class Cat::kClass{
    .name = "Cat", .superclass = &Animal::kClass, .methods = kCatMethods};
const NS::ClassRegistration catRegistration(Cat::kClass);

TEST(Object, IsOfItsClassAndThoseAbove) {
    const auto cat = NS::make<Cat>();
    EXPECT_TRUE(cat->isKindOfClass(Cat::kClass));
    EXPECT_TRUE(cat->isKindOfClass(Animal::kClass));
    EXPECT_TRUE(cat->isKindOfClass(NS::Object::kClass));
    EXPECT_FALSE(cat->isKindOfClass(NS::String::kClass));
    EXPECT_FALSE(NS::make<Animal>()->isKindOfClass(Cat::kClass));
}

TEST(Object, EqualsItselfOnly) {
    const auto a = NS::make<Animal>();
    const auto b = NS::make<Animal>();
    EXPECT_TRUE(a->isEqual(a.get()));
    EXPECT_FALSE(a->isEqual(b.get()));
    EXPECT_FALSE(a->isEqual(nullptr));
    EXPECT_EQ(a->hash(), a->hash());
    EXPECT_NE(a->hash(), b->hash());
}

TEST(Object, FallsBackToEqualityOfContentsInIsEqualTo) {
    const auto animal = NS::make<Animal>();
    EXPECT_TRUE(animal->isEqualTo(animal.get()));
    EXPECT_FALSE(animal->isEqualTo(NS::make<Animal>().get()));
    EXPECT_TRUE(NS::str("a")->isEqualTo(NS::str("a").get()));
    EXPECT_FALSE(NS::str("a")->isEqualTo(nullptr));
}

TEST(Object, DescribesItselfByClassAndAddress) {
    const auto cat = NS::make<Cat>();
    std::ostringstream expected;
    expected << "<Cat: 0x" << std::hex << reinterpret_cast<std::uintptr_t>(cat.get()) << ">";
    EXPECT_EQ(cat->description()->utf8(), expected.str());
}

TEST(Object, FindsItsMethodsAndThoseAbove) {
    const auto cat = NS::make<Cat>();
    EXPECT_NE(cat->methodForSelector({"scratch:"}), nullptr);
    EXPECT_NE(cat->methodForSelector({"feed"}), nullptr);
    EXPECT_EQ(NS::make<Animal>()->methodForSelector({"scratch:"}), nullptr);
}

TEST(Object, TellsSelectorsApartByTheirColons) {
    const auto cat = NS::make<Cat>();
    EXPECT_EQ(cat->methodForSelector({"scratch"}), nullptr);
    EXPECT_EQ(cat->methodForSelector({"feed:"}), nullptr);
    EXPECT_FALSE(NS::Selector{"restore"} == NS::Selector{"restore:"});
}

TEST(Selector, TakesOneArgumentForEachColon) {
    EXPECT_EQ(NS::Selector{"restore"}.argumentCount(), 0U);
    EXPECT_EQ(NS::Selector{"restore:"}.argumentCount(), 1U);
    EXPECT_EQ(NS::Selector{"setTarget:selector:for:"}.argumentCount(), 3U);
}

TEST(ClassNamed, FindsRegisteredClassesOnly) {
    EXPECT_EQ(NS::classNamed("Cat"), &Cat::kClass);
    EXPECT_EQ(NS::classNamed("Animal"), nullptr);
    EXPECT_EQ(NS::classNamed("cat"), nullptr);
    EXPECT_EQ(NS::classNamed(""), nullptr);
}

TEST(ForEachClass, VisitsEachRegisteredClassOnce) {
    std::multiset<std::string_view> names;
    NS::forEachClass([&](const NS::Class& each) { names.insert(each.name); });
    EXPECT_EQ(names.count("Cat"), 1U);
    EXPECT_EQ(names.count("Animal"), 0U);
}

TEST(As, GivesNilForAnotherClass) {
    const NS::RefPtr<NS::Object> cat = NS::make<Cat>();
    EXPECT_EQ(NS::as<Animal>(cat).get(), cat.get());
    EXPECT_EQ(NS::as<NS::String>(cat), nullptr);
    EXPECT_EQ(NS::as<Cat>(NS::RefPtr<NS::Object>()), nullptr);
    EXPECT_EQ(NS::as<Cat>(static_cast<const NS::Object*>(nullptr)), nullptr);
}

TEST(Cast, RaisesForAnotherClassButNotForNil) {
    const NS::RefPtr<NS::Object> cat = NS::make<Cat>();
    EXPECT_EQ(NS::cast<Cat>(cat).get(), cat.get());
    EXPECT_EQ(NS::cast<Cat>(NS::RefPtr<NS::Object>()), nullptr);
    EXPECT_EQ(Tests::nameOfException([&] { (void)NS::cast<NS::String>(cat); }),
              NS::kInvalidArgumentException);
    EXPECT_NE(Tests::reasonOfException([&] {
                  (void)NS::cast<NS::String>(cat);
              }).find("it is a Cat and is used as a NSString"),
              std::string::npos);
}

} // namespace
