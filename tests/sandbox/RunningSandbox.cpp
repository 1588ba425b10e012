#include "tests/sandbox/RunningSandbox.h"

#include "sandbox/support/Digest.h"
#include "sandbox/support/Hex.h"

namespace quillbay::sandbox {

RunningSandbox::RunningSandbox() { restart(); }

void RunningSandbox::restart() {
  client_.reset();
  server_.reset();
  server_ = std::make_unique<SandboxServer>(
      SandboxOptions{.dataFolder = folder_.path(), .clock = [this] { return now(); }});
  server_->start();
  client_ = std::make_unique<httplib::SSLClient>("localhost", server_->port());
  client_->set_ca_cert_path(server_->authorityFile());
  client_->set_keep_alive(true);
  client_->set_read_timeout(20);
}

Instant RunningSandbox::now() const {
  return systemTime() + std::chrono::seconds(clockOffset_.load());
}

nlohmann::json RunningSandbox::announcement(const std::vector<TestFile>& files, json config) {
  json items = json::array();
  for (const TestFile& file : files) {
    items.push_back({{"file_name", file.name},
                     {"content_length", std::to_string(file.bytes.size())},
                     {"content_type", file.contentType},
                     {"f", hexEncode(sha256(file.bytes))}});
  }
  if (!config.contains("link_type")) config["link_type"] = "page";
  return {{"items", items}, {"config", config}};
}

nlohmann::json RunningSandbox::createSession(const std::vector<TestFile>& files, json config) {
  const auto reply = client_->Post("/cloud/test-instance/session",
                                   announcement(files, std::move(config)).dump(), "");
  EXPECT_EQ(outcome(reply), "201");
  return json::parse(reply->body);
}

httplib::Result RunningSandbox::requestUploadUrl(const json& session, std::size_t item) {
  httplib::Headers headers = tokenOf(session);
  headers.emplace("X-QUILLBAY-CLOUD-SCP", "1");
  return client_->Put(itemPath(session, item, "upload_url"), headers, "", "");
}

std::string RunningSandbox::uploadHead(const std::string& target, std::size_t byteCount,
                                       const std::string& more) const {
  return "PUT " + target + " HTTP/1.1\r\nHost: localhost:" + std::to_string(server_->port()) +
         "\r\nContent-Length: " + std::to_string(byteCount) + "\r\n" + more + "\r\n";
}

std::string RunningSandbox::uploadTarget(const json& session, std::size_t item) {
  const auto reply = requestUploadUrl(session, item);
  EXPECT_EQ(outcome(reply), "200");
  return target(json::parse(reply->body)["url"]);
}

httplib::Result RunningSandbox::put(const std::string& target, const TestFile& file,
                                    const std::string& disposition) {
  return client_->Put(target, {{"Content-Disposition", disposition}}, file.bytes, file.contentType);
}

httplib::Result RunningSandbox::finalize(const json& session, std::size_t item,
                                         const std::string& entityTag) {
  return client_->Put(itemPath(session, item, "finalize"), tokenOf(session),
                      json{{"etag", entityTag}}.dump(), "");
}

void RunningSandbox::upload(const json& session, std::size_t item, const TestFile& file,
                            const std::string& disposition) {
  const auto stored = put(uploadTarget(session, item), file, disposition);
  ASSERT_EQ(outcome(stored), "200");
  ASSERT_EQ(outcome(finalize(session, item, stored->get_header_value("ETag"))), "200");
}

nlohmann::json RunningSandbox::share(const std::vector<TestFile>& files, json config) {
  const bool isDirect = config.value("link_type", "") == "direct";
  json session = createSession(files, std::move(config));
  for (std::size_t i = 0; i < files.size(); ++i) {
    upload(session, i, files[i], isDirect ? "inline" : "attachment");
  }
  return session;
}

std::string RunningSandbox::pathOf(const json& session) {
  return "/cloud/test-instance/session/" + session["id"].get<std::string>();
}

std::string RunningSandbox::itemPath(const json& session, std::size_t item,
                                     const std::string& action) {
  return pathOf(session) + "/items/" + session["items"][item]["id"].get<std::string>() + "/" +
         action;
}

httplib::Headers RunningSandbox::tokenOf(const json& session) {
  return {{"X-QUILLBAY-SESSION-TOKEN", session["token"].get<std::string>()}};
}

std::string RunningSandbox::target(const std::string& url) {
  return url.substr(url.find('/', std::string_view("https://").size()));
}

std::string RunningSandbox::outcome(const httplib::Result& result) {
  if (!result) return httplib::to_string(result.error());
  const std::string status = std::to_string(result->status);
  const std::size_t code = result->body.find("<Code>");
  if (code == std::string::npos) return status;
  const std::size_t start = result->body.find('>', code) + 1;
  return status + " " + result->body.substr(start, result->body.find('<', start) - start);
}

std::size_t RunningSandbox::filesOnDisk(const std::string& below) const {
  std::size_t count = 0;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(folder_.path() / below)) {
    count += entry.is_regular_file() ? 1 : 0;
  }
  return count;
}

}  // namespace quillbay::sandbox
