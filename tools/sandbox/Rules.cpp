// Words and ready-made answers; see Rules.h.
#include "sandbox/Rules.h"

namespace velto::sandbox {

const char* wordFor(Kind kind) {
  switch (kind) {
    case Kind::Ad:
      return "ad";
    case Kind::Mediation:
      return "mediation";
    case Kind::Install:
      return "install";
    case Kind::Click:
      return "click";
    case Kind::Vast:
      return "vast";
    case Kind::Download:
      return "download";
    case Kind::Tls:
      return "tls";
    case Kind::Other:
      break;
  }
  return "other";
}

Answer& Answer::header(std::string name, std::string value) {
  headers.emplace_back(std::move(name), std::move(value));
  return *this;
}

Answer Answer::markup(std::string html, int width, int height) {
  Answer answer;
  answer.body = std::move(html);
  answer.header("Content-Type", "text/html").header("x-content", "html");
  return answer.header("x-width", std::to_string(width)).header("x-height", std::to_string(height));
}

Answer Answer::mediation(std::string json, int width, int height) {
  Answer answer;
  answer.body = std::move(json);
  answer.header("Content-Type", "application/json").header("x-content", "mediation");
  return answer.header("x-width", std::to_string(width)).header("x-height", std::to_string(height));
}

Answer Answer::text(int status, std::string body) {
  Answer answer;
  answer.status = status;
  answer.body = std::move(body);
  return answer;
}

}  // namespace velto::sandbox
