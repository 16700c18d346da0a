import type { ComponentChildren } from 'preact';
import { useId } from 'preact/hooks';

interface Props {
  title: string;
  children: ComponentChildren;
  /** Beside the title: a note, or a button. */
  aside?: ComponentChildren;
  /** Extra class for its place in the view's grid. */
  class?: string;
}

export function Card({ title, children, aside, class: extra = '' }: Props) {
  const titleId = useId();
  return (
    <section class={`card ${extra}`} aria-labelledby={titleId}>
      <div class="card-head line">
        <h2 id={titleId}>{title}</h2>
        {aside}
      </div>
      {children}
    </section>
  );
}
