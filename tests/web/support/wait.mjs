// Waiting for conditions, never for a time.

/// Returns the first result of a function that is neither false, null nor undefined.
export async function until(what, condition, milliseconds = 15000) {
  const end = Date.now() + milliseconds;
  for (;;) {
    const result = await condition();
    if (result !== false && result !== null && result !== undefined) return result;
    if (Date.now() > end) throw new Error(`waited ${milliseconds} ms in vain: ${what}`);
    await new Promise((resolve) => setTimeout(resolve, 20));
  }
}

/// What a page that is just replaced by another one says of a condition.
function isLoading(error) {
  if (!/context was destroyed|no such (frame|realm)|detached/i.test(error.message)) throw error;
  return false;
}

/// Waits until a function returns true in a page, also in one that is not shown: there puppeteer's own
/// waitForFunction waits for ever.
export async function untilInPage(page, condition, ...given) {
  await until(String(condition), () => page.evaluate(condition, ...given).catch(isLoading));
}

/// Repeats a job that shows a prompt while its site has to wait for its next one.
export async function untilPromptsAreAllowed(job) {
  await until("the end of the wait", async () => {
    try {
      await job();
      return true;
    } catch (error) {
      if (error.code !== "wait") throw error;
      return null;
    }
  });
}
