#include "sandbox/links/Page.h"

#include <array>
#include <cstdio>

#include "sandbox/support/Markup.h"

namespace quillbay::sandbox {

namespace {

constexpr std::string_view style = R"(
:root{color-scheme:light dark;--ground:#f2f3f7;--card:#fff;--ink:#1c2030;--soft:#646b80;--line:#e4e6ee;
--accent:#3b5bdb;--on-accent:#fff;--tint:#eef1fd;--warn:#b42318}
@media (prefers-color-scheme:dark){:root{--ground:#12141b;--card:#1b1e28;--ink:#e8eaf2;--soft:#9aa1b5;
--line:#2b2f3d;--accent:#8ea6ff;--on-accent:#10131d;--tint:#232840;--warn:#ff8a80}}
*{box-sizing:border-box}
body{margin:0;min-height:100vh;padding:2.5rem 1rem;background:var(--ground);color:var(--ink);
font:16px/1.5 system-ui,"Noto Sans","DejaVu Sans",sans-serif}
main{max-width:42rem;margin:0 auto}
.brand{margin:0 0 1rem .25rem;color:var(--soft);font-size:.85rem;font-weight:600}
.brand::before{content:"";display:inline-block;width:.65rem;height:.65rem;margin-right:.5rem;
border-radius:.65rem .65rem 0 .65rem;background:var(--accent)}
.card{padding:2rem;border:1px solid var(--line);border-radius:1rem;background:var(--card);
box-shadow:0 1px 2px rgb(0 0 0/.05),0 8px 24px rgb(0 0 0/.05)}
h1{margin:0;font-size:1.5rem;line-height:1.25;overflow-wrap:anywhere}
p{margin:.5rem 0 0}
.soft,small{color:var(--soft);font-size:.9rem}
.notice{margin-top:1.25rem;padding:.85rem 1rem;border-radius:.6rem;background:var(--tint)}
.notice .button{margin-top:.85rem;border-color:var(--accent)}
.error{color:var(--warn)}
progress{display:block;width:100%;height:.4rem;margin-top:.5rem;border:0;border-radius:.4rem;
overflow:hidden;background:var(--line);accent-color:var(--accent);appearance:none}
progress::-webkit-progress-bar{background:var(--line)}
progress::-webkit-progress-value{background:var(--accent);border-radius:.4rem}
progress::-moz-progress-bar{background:var(--accent)}
ul{margin:1.5rem 0 0;padding:0;list-style:none}
li{display:flex;align-items:center;gap:1rem;padding:.8rem 0;border-top:1px solid var(--line)}
li>div{flex:1;min-width:0}
li bdi{display:block;font-weight:500;overflow-wrap:anywhere}
.button,button{display:inline-block;flex:none;padding:.45rem .95rem;border:1px solid var(--line);
border-radius:.6rem;background:none;color:var(--accent);font:inherit;font-weight:600;font-size:.9rem;
text-decoration:none;cursor:pointer}
.button:hover{background:var(--tint)}
.primary,button{margin-top:1.25rem;padding:.65rem 1.4rem;border-color:transparent;
background:var(--accent);color:var(--on-accent);font-size:1rem}
.primary:hover,button:hover{background:var(--accent);filter:brightness(1.08)}
:focus-visible{outline:3px solid var(--accent);outline-offset:2px}
form{margin-top:1.25rem}
label{display:block;font-weight:600}
input{width:100%;margin-top:.4rem;padding:.65rem .8rem;border:1px solid var(--soft);
border-radius:.6rem;background:var(--card);color:var(--ink);font:inherit}
@media (max-width:34rem){body{padding:1rem .75rem}.card{padding:1.25rem}}
)";

}  // namespace

Reply pageReply(int status, std::string_view title, std::string_view content) {
  std::string html =
      "<!DOCTYPE html>\n<html lang=\"en\"><head><meta charset=\"utf-8\">"
      "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">"
      "<meta name=\"robots\" content=\"noindex\"><title>" +
      escapeMarkup(title) + " – Quillbay Cloud</title><style>";
  html += style;
  html += "</style></head><body><main><p class=\"brand\">Quillbay Cloud</p><div class=\"card\">\n";
  html += content;
  html += "\n</div></main></body></html>\n";
  return {status,
          "text/html; charset=utf-8",
          std::move(html),
          {{"Cache-Control", "no-store"},
           {"Content-Security-Policy",
            "default-src 'none'; style-src 'unsafe-inline'; form-action 'self'; "
            "base-uri 'none'; frame-ancestors 'none'"},
           {"X-Content-Type-Options", "nosniff"},
           {"Referrer-Policy", "no-referrer"}}};
}

Reply messageReply(int status, std::string_view heading, std::string_view message) {
  return pageReply(
      status, heading,
      "<h1>" + escapeMarkup(heading) + "</h1><p class=\"soft\">" + escapeMarkup(message) + "</p>");
}

std::string humanSize(std::uint64_t byteCount) {
  if (byteCount == 1) return "1 byte";
  if (byteCount < 1000) return std::to_string(byteCount) + " bytes";
  constexpr std::array<const char*, 5> units{"kB", "MB", "GB", "TB", "PB"};
  double size = static_cast<double>(byteCount) / 1000;
  std::size_t unit = 0;
  // From 999.95 on, rounding to one digit would show 1000.0.
  for (; size >= 999.95 && unit + 1 < units.size(); ++unit) size /= 1000;
  std::array<char, 32> text{};
  std::snprintf(text.data(), text.size(), "%.1f %s", size, units[unit]);
  return text.data();
}

}  // namespace quillbay::sandbox
