// Runs the suites that are named, or all, in one process: a browser takes seconds to start.
// tests/web/run calls this.
const suites = new URL("suites/", import.meta.url);
const named = process.argv.slice(2);
// The last one removes the extension.
const all = [
  "whole_job", "trust", "prompts", "leaving", "large_data", "button", "example_form", "guide",
  "permission_question", "without_extension",
];
for (const suite of named.length > 0 ? named : all) await import(new URL(`${suite}.mjs`, suites));
