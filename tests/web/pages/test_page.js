// Runs the jobs of the tests in a page that serves no other purpose.
import * as library from "/zrkey.js";

const zrkey = library.default ?? library.zrkey ?? library;
window.zrkey = zrkey;
/// What one job leaves for the next.
window.kept = {};

function packed(value) {
  if (value instanceof Uint8Array) {
    let text = "";
    for (let i = 0; i < value.length; i += 4096) {
      text += String.fromCharCode(...value.subarray(i, i + 4096));
    }
    return { bytes: btoa(text) };
  }
  if (Array.isArray(value)) return value.map(packed);
  return value === undefined ? null : value;
}

function described(error) {
  const { name, message, code, hresult, member } = error;
  return { name, message, code, hresult, member, isZRKeyError: error instanceof library.ZRKeyError };
}

/// Runs a job; returns {value} or {error}, both as JSON allows them.
window.runJob = async (job, given) => {
  try {
    return { value: packed(await job(window.kept, ...given)) };
  } catch (error) {
    return { error: described(error) };
  }
};
/// Starts a job whose outcome is wanted later.
window.startJob = (job, given) => {
  window.outcome = null;
  window.runJob(job, given).then((outcome) => (window.outcome = outcome));
};
window.isReady = true;
