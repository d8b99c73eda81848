#include "Platform/Foundation/URL.h"

#include "Platform/Foundation/Testing/RaisedException.h"
#include "Tests/Support/PrivateFolders.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

namespace {

std::string text(const NS::RefPtr<NS::String>& string) {
    return string ? string->utf8() : "(nil)";
}

class URL : public testing::Test {
  protected:
    static NS::RefPtr<NS::URL> url(std::string_view string) {
        return NS::URL::URLWithString(*NS::str(string));
    }
    static NS::Ref<NS::URL> relativeTo(std::string_view string, std::string_view base) {
        return NS::Ref<NS::URL>(*NS::URL::URLWithString_relativeToURL(*NS::str(string), url(base)));
    }
    static NS::Ref<NS::URL> file(std::string_view bytes) {
        return NS::URL::fileURLWithPath(NS::String::fromFileSystemRepresentation(bytes));
    }
};

TEST_F(URL, OfAFileEncodesWhatAURLDoesNotHold) {
    EXPECT_EQ(text(file("/no/such file")->absoluteString()), "file:///no/such%20file");
    EXPECT_EQ(text(file("/a%b#c?d;e[f]")->absoluteString()), "file:///a%25b%23c%3Fd%3Be%5Bf%5D");
    EXPECT_EQ(text(file("/caf\xC3\xA9")->absoluteString()), "file:///caf%C3%A9");
    EXPECT_EQ(text(file("/x-._~!$&'()*+,=@y")->absoluteString()), "file:///x-._~!$&'()*+,=@y");
}

TEST_F(URL, OfFileSystemBytesTakesThemAsTheyStand) {
    const auto here = NS::URL::fileURLWithFileSystemRepresentation("/");
    EXPECT_EQ(text(here->absoluteString()), "file:///");
    const auto odd = NS::URL::fileURLWithFileSystemRepresentation("/usr/a b/\xFF");
    EXPECT_EQ(text(odd->absoluteString()), "file:///usr/a%20b/%FF");
    EXPECT_EQ(odd->path()->fileSystemRepresentation(), "/usr/a b/\xFF");
    // A folder that is there, and would get a slash as a path.
    EXPECT_EQ(text(NS::URL::fileURLWithFileSystemRepresentation("/usr")->absoluteString()),
              "file:///usr");
}

TEST_F(URL, OfAFileGivesItsPathBackByteForByte) {
    std::string everyByte = "/";
    for (int byte = 1; byte < 256; ++byte) {
        everyByte += static_cast<char>(byte);
    }
    for (const std::string& path :
         {everyByte, std::string("/bad\xFF\xC3name"), std::string("/%41")}) {
        EXPECT_EQ(file(path)->path()->fileSystemRepresentation(), path);
    }
}

TEST_F(URL, OfAFileThatIsRelativeStandsInTheCurrentFolder) {
    const auto whole = std::filesystem::current_path() / "no such file";
    EXPECT_EQ(file("no such file")->path()->fileSystemRepresentation(), whole.string());
}

TEST_F(URL, OfAFileRaisesForNil) {
    EXPECT_EQ(Tests::nameOfException([] { NS::URL::fileURLWithPath(nullptr); }),
              NS::kInvalidArgumentException);
}

class FolderURL : public Tests::FolderTest {};

TEST_F(FolderURL, EndsInASlashWhenTheFolderIsThere) {
    const std::string path = folders.root().string();
    const auto of = [](const std::string& p) {
        return text(NS::URL::fileURLWithPath(NS::str(p))->absoluteString());
    };
    EXPECT_EQ(of(path), "file://" + path + "/");
    EXPECT_EQ(of(path + "/"), "file://" + path + "/");
    EXPECT_EQ(of(path + "/missing"), "file://" + path + "/missing");
    std::ofstream(path + "/file") << "x";
    EXPECT_EQ(of(path + "/file"), "file://" + path + "/file");
    EXPECT_EQ(text(NS::URL::fileURLWithPath(NS::str(path))->path()), path);
}

TEST_F(URL, OfTheRootKeepsItsSlash) {
    EXPECT_EQ(text(file("/")->absoluteString()), "file:///");
    EXPECT_EQ(text(file("/")->path()), "/");
}

TEST_F(URL, IsNilForTextThatIsNone) {
    for (const std::string_view string : {"a b", "caf\xC3\xA9", "<x>", "a%2", "a%", "%zz", "a\"b",
                                          "a\\b", "{}", "a^b", "a`b", "a|b", "a\nb"}) {
        EXPECT_FALSE(url(string)) << string;
    }
    EXPECT_TRUE(url("http://host:80/a;b=c?d=[e]&f#%41"));
}

TEST_F(URL, HasAPathOnlyWhereThereIsOne) {
    EXPECT_EQ(text(url("http://host/a/b%20c/?q#f")->path()), "/a/b c");
    EXPECT_EQ(text(url("http://host//")->path()), "/");
    EXPECT_EQ(text(url("http://host")->path()), "(nil)");
    EXPECT_EQ(text(url("relative/path")->path()), "relative/path");
}

TEST_F(URL, IsAFilesByItsScheme) {
    EXPECT_TRUE(file("/x")->isFileURL());
    EXPECT_TRUE(url("FILE:///x")->isFileURL());
    EXPECT_TRUE(relativeTo("x", "file:///a/")->isFileURL());
    EXPECT_FALSE(url("files:///x")->isFileURL());
    EXPECT_FALSE(url("file")->isFileURL());
    EXPECT_FALSE(url("http://host/file:")->isFileURL());
}

// The examples of RFC 3986, sections 5.4.1 and 5.4.2.
TEST_F(URL, IsResolvedAgainstItsBase) {
    const std::pair<const char*, const char*> examples[] = {
        {"g:h",           "g:h"                  },
        {"g",             "http://a/b/c/g"       },
        {"./g",           "http://a/b/c/g"       },
        {"g/",            "http://a/b/c/g/"      },
        {"/g",            "http://a/g"           },
        {"//g",           "http://g"             },
        {"?y",            "http://a/b/c/d;p?y"   },
        {"g?y",           "http://a/b/c/g?y"     },
        {"#s",            "http://a/b/c/d;p?q#s" },
        {"g#s",           "http://a/b/c/g#s"     },
        {"g?y#s",         "http://a/b/c/g?y#s"   },
        {";x",            "http://a/b/c/;x"      },
        {"g;x?y#s",       "http://a/b/c/g;x?y#s" },
        {".",             "http://a/b/c/"        },
        {"./",            "http://a/b/c/"        },
        {"..",            "http://a/b/"          },
        {"../",           "http://a/b/"          },
        {"../g",          "http://a/b/g"         },
        {"../..",         "http://a/"            },
        {"../../",        "http://a/"            },
        {"../../g",       "http://a/g"           },
        {"../../../g",    "http://a/g"           },
        {"../../../../g", "http://a/g"           },
        {"/./g",          "http://a/g"           },
        {"/../g",         "http://a/g"           },
        {"g.",            "http://a/b/c/g."      },
        {".g",            "http://a/b/c/.g"      },
        {"g..",           "http://a/b/c/g.."     },
        {"..g",           "http://a/b/c/..g"     },
        {"./../g",        "http://a/b/g"         },
        {"./g/.",         "http://a/b/c/g/"      },
        {"g/./h",         "http://a/b/c/g/h"     },
        {"g/../h",        "http://a/b/c/h"       },
        {"g;x=1/./y",     "http://a/b/c/g;x=1/y" },
        {"g;x=1/../y",    "http://a/b/c/y"       },
        {"g?y/./x",       "http://a/b/c/g?y/./x" },
        {"g#s/../x",      "http://a/b/c/g#s/../x"},
    };
    for (const auto& [reference, whole] : examples) {
        const auto resolved = relativeTo(reference, "http://a/b/c/d;p?q");
        EXPECT_EQ(text(resolved->absoluteString()), whole) << reference;
        EXPECT_EQ(text(resolved->relativeString()), reference);
    }
    EXPECT_EQ(text(relativeTo("g", "http://a")->absoluteString()), "http://a/g");
}

TEST_F(URL, IsEqualByTextAndBase) {
    EXPECT_TRUE(url("http://a/b")->isEqual(url("http://a/b").get()));
    EXPECT_FALSE(url("http://a/b")->isEqual(url("http://a/b/").get()));
    EXPECT_TRUE(relativeTo("b", "http://a/")->isEqual(relativeTo("b", "http://a/").get()));
    EXPECT_FALSE(relativeTo("b", "http://a/")->isEqual(relativeTo("b", "http://c/").get()));
    EXPECT_FALSE(relativeTo("b", "http://a/")->isEqual(url("b").get()));
    EXPECT_FALSE(url("b")->isEqual(relativeTo("b", "http://a/").get()));
    EXPECT_FALSE(url("b")->isEqual(NS::str("b").get()));
    EXPECT_EQ(url("http://a/b")->hash(), url("http://a/b")->hash());
}

TEST_F(URL, DescribesItselfByTextAndBase) {
    EXPECT_EQ(text(url("http://a/b")->description()), "http://a/b");
    EXPECT_EQ(text(relativeTo("b", "http://a/")->description()), "b -- http://a/");
}

} // namespace
