/** Draws a share as a bar. It is only a picture: words beside it give the figure. */
export function Bar({ percent, warn }: { percent: number; warn?: boolean }) {
  return (
    <span class="bar">
      {percent > 0 && (
        <span
          class={warn ? 'bar-value bar-full' : 'bar-value'}
          style={{ width: `${Math.min(percent, 100)}%` }}
        />
      )}
    </span>
  );
}
