#include "DescriptionSupport.h"
#include "XmlParser/XmlFileHandle.h"

#include <gtest/gtest.h>

#include <csignal>
#include <random>
#include <sys/resource.h>

using description_test::shortage;

/* A new document of one element, in place of an older and longer text. */
class Editing : public testing::Test {
protected:
  Editing() {
    xml_file_open(handle, file.path(), 4);
    root = append(nullptr, "a", " \v\t\r\nx y\v \n");
  }
  ~Editing() override { xml_file_destroy(handle); }

  _XmlNode* append(_XmlNode* parent, char const* name, char const* value = nullptr) {
    return xml_file_append_node(handle, parent, name, value, "no such filter");
  }
  /* All that is to survive, in order. No text of these tests has a vertical bar. */
  static std::string everything(_XmlNode const* node) {
    std::string all = node->name + (node->value.empty() ? "" : "|" + node->value + "|");
    for (NodeAttribute const& attribute : node->attributes) {
      all += "@" + attribute.name + "=" + attribute.value + "|";
    }
    for (_XmlNode const* child : xml_file_children(node, nullptr)) {
      all += "(" + everything(child) + ")";
    }
    return all;
  }
  char const* any(std::vector<char const*> const& texts) { return texts[random() % texts.size()]; }
  void editAtRandom() {
    _XmlNode* node = root;
    while (node->firstChild != nullptr && random() % 4 != 0) {
      auto const count = static_cast<std::size_t>(xml_file_get_child_count(node, nullptr));
      node = xml_file_get_child_node(static_cast<int>(random() % count), node, nullptr);
    }
    std::string text;
    while (random() % 5 != 0) {
      text += any({"&", "<", ">", "'", "\"", " ", "\t", "\n", "\r", "0%s", "é漢😀", "]]>", "&amp;lt;"});
    }
    char const* const name = any({"a", "Name", "_n-1.2", "é漢"});
    char const* const filter = any({"a", "Name", "", nullptr});
    auto const index = static_cast<unsigned int>(random() % 4);
    xml_file_remove_node(handle, index, node, filter);
    xml_file_insert_before_node(handle, index, node, name, text.c_str(), filter);
    xml_file_insert_after_node(handle, index, node, name, "", filter);
    append(node, name, text.c_str());
    xml_file_insert_before_attribute(index, node, name, text.c_str());
  }

  std::minstd_rand random{4711};
  description_test::TemporaryFile file{std::string(1000, '<')};
  xml_file_handle* handle = xml_file_create();
  _XmlNode* root = nullptr;
};

TEST_F(Editing, AnyTreeStoredAndReadAgainEqualsItself) {
  for (int round = 0; round < 3000; ++round) {
    editAtRandom();
    editAtRandom();
    std::string const before = everything(root);
    xml_file_close(handle);
    ASSERT_TRUE(xml_file_open(handle, file.path(), 0x14));
    root = xml_file_get_root(handle);
    ASSERT_EQ(everything(root), before) << file.content();
    /* A new file is faster: replacing one costs a flush. */
    round % 8 == 0 ? xml_file_remove_all_child(handle, root, nullptr) : void(unlink(file.path()));
  }
}

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
               xml_file_insert_after_attribute(0, root, "k", "6"));
  EXPECT_FALSE(xml_file_append_attribute(root, "k", "") || xml_file_append_attribute(nullptr, "k", "6"));
  EXPECT_FALSE(xml_file_remove_attribute_by_index(1, root) || xml_file_remove_attribute("K", root));
  EXPECT_EQ(everything(root), "a|x y|@k=1|@l=3|@m= 2|@y=4|@z=5|");
  EXPECT_TRUE(xml_file_remove_attribute_by_index(0, root) && xml_file_remove_attribute("y", root));
  EXPECT_EQ(everything(root), "a|x y|@l=3|@m= 2|@z=5|");
}

TEST_F(Editing, StoresTheseBytesAndOnlyWhenAskedTo) {
  xml_file_append_attribute(root, "k", "1 2");
  append(append(root, "b"), "c", "&<>'\"\t\r\n&amp;");
  append(root, "d");
  xml_file_destroy(handle);
  std::string const text =
      "\xef\xbb\xbf<?xml version = \"1.0\" encoding = \"utf-8\" ?>\r\n"
      "<a k=\"1&#x0020;2\">x&#x0020;y\n\t<b>\n"
      "\t\t<c>&amp;&lt;&gt;&apos;&quot;&#x0009;&#x000D;&#x000A;&amp;amp;</c>\n\t</b>\n\t<d />\n</a>\n";
  EXPECT_EQ(file.content(), text);
  handle = xml_file_create();
  xml_file_open(handle, file.path(), 0x13);
  append(xml_file_get_root(handle), "lost");
  xml_file_open(handle, file.path(), 0x14);
  EXPECT_EQ(file.content(), text) << "only a mode with bit 4 stores";
  append(xml_file_get_root(handle), "kept");
  xml_file_open(handle, file.path(), 1);
  EXPECT_EQ(xml_file_get_child_count(xml_file_get_root(handle), "kept"), 1) << "opening another stores too";

  class Reluctant : public CFile {
  public:
    int write(void const* buffer, unsigned int count) override {
      all.append(static_cast<char const*>(buffer), std::min(count, 3U));
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
  std::string const old = file.content();
  auto const storeLongText = [&] {
    EXPECT_TRUE(xml_file_open(handle, file.path(), 0x14));
    append(xml_file_get_root(handle), "long", std::string(5000, 'x').c_str());
  };
  storeLongText();
  shortage.disk = true;
  xml_file_close(handle);
  shortage.disk = false;
  ASSERT_EQ(file.content(), old) << "a full disk";

  storeLongText();
  rlimit before{};
  getrlimit(RLIMIT_FSIZE, &before);
  rlimit const limit{4000, before.rlim_max};
  auto const handler = std::signal(SIGXFSZ, SIG_IGN);
  setrlimit(RLIMIT_FSIZE, &limit);
  xml_file_close(handle);
  setrlimit(RLIMIT_FSIZE, &before);
  std::signal(SIGXFSZ, handler);
  ASSERT_EQ(file.content(), old) << "more than the process may write";

  int refused = 0;
  for (; file.content() == old; ++refused) {
    storeLongText();
    shortage.allocationsLeft = refused;
    xml_file_close(handle);
    shortage.allocationsLeft = -1;
  }
  ASSERT_TRUE(refused > 5 && xml_file_open(handle, file.path(), 1));
  EXPECT_EQ(everything(xml_file_get_root(handle)), "a|x y|(old)(long|" + std::string(5000, 'x') + "|)");
}
