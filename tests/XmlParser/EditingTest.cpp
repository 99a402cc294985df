#include "ENIObject/DescriptionSupport.h"
#include "XmlParser/XmlFileHandle.h"
#include "memory/Allocator.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <sys/resource.h>

static bool diskIsFull = false;

int fallocate(int /*fd*/, int /*mode*/, off_t /*offset*/, off_t /*length*/) {
  errno = ENOSPC;
  return diskIsFull ? -1 : 0;
}

// A new document of one element, in place of an older and longer text.
class Editing : public testing::Test {
protected:
  Editing() {
    xml_file_open(handle, file.path(), 4);
    root = append(nullptr, "a", " \v\t\r\nx y\v \n");
  }
  ~Editing() override { xml_file_destroy(handle); }

  _XmlNode* append(_XmlNode* parent, const char* name, const char* value = nullptr) {
    return xml_file_append_node(handle, parent, name, value, "no such filter");
  }
  // All that is to survive, in order.
  static std::string everything(const _XmlNode* node) {
    std::string all = node->name + (node->value.empty() ? "" : "|" + node->value + "|");
    for (const _NodeAttribute& attribute : node->attributes) {
      all += "@" + attribute.name + "=" + attribute.value + "|";
    }
    for (const _XmlNode* child : xml_file_children(node, nullptr)) {
      all += "(" + everything(child) + ")";
    }
    return all;
  }

  description_test::TemporaryFile file{std::string(1000, '<')};
  xml_file_handle* handle = xml_file_create();
  _XmlNode* root = nullptr;
};

TEST_F(Editing, NodesGoInAndOutByFilteredIndex) {
  append(append(root, "X"), "child");
  append(root, "XX");
  append(append(root, "Y"), "X");
  append(root, "X");
  xml_file_insert_before_node(handle, 1, root, "i", nullptr, "X");
  xml_file_insert_after_node(handle, 1, root, "j", "", "");
  xml_file_insert_before_node(handle, 2, root, "k", "", "X");
  xml_file_insert_after_node(handle, 2, root, "l", "", "X");
  EXPECT_EQ(everything(root), "a|x y|(k)(X(child))(XX)(j)(Y(X))(i)(X)(l)");
  EXPECT_TRUE(xml_file_remove_node(handle, 7, root, nullptr) && xml_file_remove_node(handle, 0, root, "X"));
  append(root, "m");
  EXPECT_FALSE(xml_file_remove_node(handle, 1, root, "X") || xml_file_remove_node(nullptr, 0, root, "X"));
  xml_file_remove_all_child(handle, root, "X");
  append(root, "n");
  EXPECT_EQ(everything(root), "a|x y|(k)(XX)(j)(Y(X))(i)(m)(n)");
  xml_file_remove_all_child(handle, root, nullptr);
  EXPECT_TRUE(!append(nullptr, "b") && !append(root, "") && everything(root) == "a|x y|");
  EXPECT_TRUE(xml_file_remove_node(handle, 0, nullptr, "X") && xml_file_get_root(handle) == nullptr);
}

TEST_F(Editing, AttributeNamesStayUnique) {
  EXPECT_TRUE(xml_file_append_attribute(root, "m", "0") && xml_file_append_attribute(root, "m", " 2"));
  xml_file_insert_before_attribute(0, root, "k", "1");
  xml_file_insert_after_attribute(0, root, "l", "3");
  xml_file_insert_before_attribute(9, root, "y", "4");
  xml_file_insert_after_attribute(~0U, root, "z", "5");
  EXPECT_FALSE(xml_file_insert_before_attribute(0, root, "m", "6") ||
               xml_file_append_attribute(root, "k", "") || xml_file_append_attribute(nullptr, "k", "6") ||
               xml_file_remove_attribute_by_index(1, root) || xml_file_remove_attribute("K", root));
  EXPECT_EQ(everything(root), "a|x y|@k=1|@l=3|@m= 2|@y=4|@z=5|");
  EXPECT_TRUE(xml_file_remove_attribute_by_index(0, root) && xml_file_remove_attribute("y", root));
  EXPECT_EQ(everything(root), "a|x y|@l=3|@m= 2|@z=5|");
}

TEST_F(Editing, StoresTheseBytesAndOnlyWhenAskedTo) {
  xml_file_append_attribute(root, "k", "1 2");
  append(append(root, "b"), "c", "&<>'\"\t\r\n&amp;");
  append(root, "d", "é漢😀");
  const std::string before = everything(root);
  xml_file_destroy(handle);
  const std::string text =
      "\xef\xbb\xbf<?xml version = \"1.0\" encoding = \"utf-8\" ?>\r\n"
      "<a k=\"1&#x0020;2\">x&#x0020;y\n\t<b>\n"
      "\t\t<c>&amp;&lt;&gt;&apos;&quot;&#x0009;&#x000D;&#x000A;&amp;amp;</c>\n\t</b>\n\t<d>é漢😀</d>\n</a>\n";
  ASSERT_EQ(file.content(), text);
  handle = xml_file_create();
  xml_file_open(handle, file.path(), 0x13);
  ASSERT_EQ(everything(xml_file_get_root(handle)), before);
  append(xml_file_get_root(handle), "lost");
  xml_file_open(handle, file.path(), 0x14);
  EXPECT_EQ(file.content(), text) << "only a mode with bit 4 stores";
  append(xml_file_get_root(handle), "kept");
  xml_file_open(handle, file.path(), 1);
  EXPECT_EQ(everything(xml_file_get_root(handle)), before + "(kept)") << "opening another stores too";

  class Reluctant : public CFile {
  public:
    int write(const void* buffer, unsigned int count) override {
      all.append(static_cast<const char*>(buffer), std::min(count, 3U));
      return static_cast<int>(std::min(count, 3U));
    }
    std::string all;
  } reluctant;
  handle->xml_store_private(&reluctant, xml_file_get_root(handle), 0);
  EXPECT_EQ(reluctant.all, file.content().substr(text.find("<a")));
}

TEST_F(Editing, WhatCannotBeStoredLeavesTheOldFile) {
  append(root, "old");
  xml_file_close(handle);
  const std::string old = file.content();
  const auto storeLongText = [&](auto shorten, auto restore) {
    EXPECT_TRUE(xml_file_open(handle, file.path(), 0x14));
    append(xml_file_get_root(handle), "long", std::string(5000, 'x').c_str());
    shorten();
    xml_file_close(handle);
    restore();
  };
  storeLongText([] { diskIsFull = true; }, [] { diskIsFull = false; });
  ASSERT_EQ(file.content(), old) << "a full disk";

  rlimit before{};
  getrlimit(RLIMIT_FSIZE, &before);
  const rlimit limit{4000, before.rlim_max};
  const auto handler = std::signal(SIGXFSZ, SIG_IGN);
  storeLongText([&] { setrlimit(RLIMIT_FSIZE, &limit); }, [&] { setrlimit(RLIMIT_FSIZE, &before); });
  std::signal(SIGXFSZ, handler);
  ASSERT_EQ(file.content(), old) << "more than the process may write";

  std::size_t allocation = 0;
  while (file.content() == old && allocation < 1000) {
    ++allocation;
    storeLongText([&] { memory::failAt(allocation); }, [] { memory::failAt(0); });
  }
  ASSERT_TRUE(allocation > 5 && xml_file_open(handle, file.path(), 1));
  EXPECT_EQ(everything(xml_file_get_root(handle)), "a|x y|(old)(long|" + std::string(5000, 'x') + "|)");
}
