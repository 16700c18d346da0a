/** A share as a bar. Only a picture: the figure stands beside it in words. */
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
