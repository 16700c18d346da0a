/** Calls `onSilence` once no `reset` has come for `silenceMs`. Watches only after the first `reset`. */
export function createWatchdog(silenceMs: number, onSilence: () => void) {
  let timer: ReturnType<typeof setTimeout> | undefined;
  const stop = () => clearTimeout(timer);
  const reset = () => {
    stop();
    timer = setTimeout(onSilence, silenceMs);
  };
  return { reset, stop };
}
