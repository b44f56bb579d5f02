// The time of a message from a page to the host and back, beside the same path to a host that only
// echoes. Both connections are open in one page of one browser, and take turns. The time is the one that
// passes: browser, extension and host are processes of their own. Prints a row of scripts/bench.
// usage: tests/web/run chromium --program bench/web/page_message.mjs ECHO_HOST
import fs from "node:fs";
import { inPage } from "../../tests/web/support/page_jobs.mjs";
import { World } from "../../tests/web/support/world.mjs";

const ROUNDS = 40;
const MESSAGES = 100;
const [echoHost] = process.argv.slice(2);

/// Connects the page, under a name, to the program that the browser's manifest names.
const connect = async (kept, name) => {
  kept[name] = await zrkey.connect();
  return kept[name].GetName();
};

/// The times of a message in ms, one for each round.
const measure = async (kept, rounds, messages) => {
  const times = { host: [], echo: [] };
  for (let round = 0; round <= rounds; ++round) {
    for (const name of ["echo", "host"]) {
      const begin = performance.now();
      for (let i = 0; i < messages; ++i) await kept[name].GetName();
      // The first round warms up.
      if (round > 0) times[name].push((performance.now() - begin) / messages);
    }
  }
  return [times.host, times.echo];
};

/// Of sorted numbers, the one at a part of the way.
const at = (values, part) =>
  [...values].sort((a, b) => a - b)[Math.floor(part * (values.length - 1))];
const median = (values) => at(values, 0.5);

/// A row as bench_report.py reads it, of times in ms.
const rowOf = (host, echo) => {
  const ratios = host.map((time, round) => time / echo[round]);
  return {
    measure: "ratio",
    result: median(ratios),
    low: at(ratios, 0.25),
    high: at(ratios, 0.75),
    library_ns: median(host) * 1e6,
    floor_ns: median(echo) * 1e6,
    rounds: ratios.length,
    floor: "the same path to a host that only answers",
  };
};

const world = new World(`${process.env.ZRKEY_WEB_FOLDER}/world`);
world.install();
const browser = await world.launch("chromium");
try {
  await browser.answerYesToPermissions();
  const site = await world.openSite();
  world.zrkey("browser", "allow", site.origin);
  await world.allowInExtension(browser, site);
  const page = await browser.newPage(`${site.origin}/`);
  await inPage(page, connect, "host");
  const manifest = `${world.home}/.config/chromium/NativeMessagingHosts/zrkey.browser.json`;
  const described = JSON.parse(fs.readFileSync(manifest, "utf8"));
  fs.writeFileSync(manifest, JSON.stringify({ ...described, path: fs.realpathSync(echoHost) }));
  await inPage(page, connect, "echo");
  const [host, echo] = await inPage(page, measure, ROUNDS, MESSAGES);
  console.log(JSON.stringify(rowOf(host, echo)));
} finally {
  await browser.close();
  world.close();
}
