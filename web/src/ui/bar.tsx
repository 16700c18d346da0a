/** A share as a bar. Only a picture: the figure stands beside it in words. */
export function Bar({ percent, warn }: { percent: number; warn?: boolean }) {
  return (
    <span class="bar">
      <span class={warn ? 'bar-value bar-full' : 'bar-value'} style={{ width: `${Math.min(Math.max(percent, 0), 100)}%` }} />
    </span>
  );
}
