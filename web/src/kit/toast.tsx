import { useEffect, useState } from 'preact/hooks';
import { createStore } from '../base/store.ts';
import { t } from '../base/text.ts';
import { IconButton } from './button.tsx';
import { useStore } from './hooks.ts';
import { Icon } from './icon.tsx';

export interface ToastAction {
  label: string;
  run(): void;
}

interface Toast {
  id: number;
  text: string;
  error: boolean;
  action: ToastAction | undefined;
  about: string;
}

const toastMs = 5000;
const errorToastMs = 12_000;
const maxToasts = 4;

const toasts = createStore<readonly Toast[]>([]);
let lastId = 0;

/**
 * Shows a short notice in the corner. It replaces an earlier one that was `about` the same thing or had the
 * same text.
 */
export function toast(
  text: string,
  {
    error = false,
    action,
    about = text,
  }: { error?: boolean; action?: ToastAction | undefined; about?: string } = {},
) {
  const next: Toast = { id: ++lastId, text, error, action, about };
  toasts.set([...toasts.get().filter((other) => other.about !== about), next].slice(-maxToasts));
}

function dismiss(id: number) {
  toasts.set(toasts.get().filter((other) => other.id !== id));
}

export const clearToasts = () => toasts.set([]);

/** Runs the action of the last notice that offers one. Returns false if none does. */
export function undoLast(): boolean {
  const last = toasts.get().findLast(({ action }) => action);
  if (!last) return false;
  dismiss(last.id);
  last.action!.run();
  return true;
}

function ToastCard({ id, text, error, action }: Toast) {
  const [held, setHeld] = useState(false);
  useEffect(() => {
    if (held) return;
    const timer = setTimeout(() => dismiss(id), error || action ? errorToastMs : toastMs);
    return () => clearTimeout(timer);
  }, [id, held]);
  return (
    <div
      class={error ? 'toast toast-error line' : 'toast line'}
      onMouseEnter={() => setHeld(true)}
      onMouseLeave={() => setHeld(false)}
      onFocusIn={() => setHeld(true)}
      onFocusOut={() => setHeld(false)}
    >
      <Icon name={error ? 'alert' : 'success'} />
      <span class="toast-text">{text}</span>
      {action && (
        <button
          type="button"
          class="link"
          onClick={() => {
            dismiss(id);
            action.run();
          }}
        >
          {action.label}
        </button>
      )}
      <IconButton icon="close" label={t('app.close')} onClick={() => dismiss(id)} />
    </div>
  );
}

/** Creates both live regions at the start: screen readers announce only additions to a known region. */
export function Toasts() {
  const all = useStore(toasts);
  const cards = (error: boolean) =>
    all.filter((one) => one.error === error).map((one) => <ToastCard key={one.id} {...one} />);
  return (
    <section class="toasts" aria-label={t('app.messages')}>
      <div role="alert">{cards(true)}</div>
      <div role="status">{cards(false)}</div>
    </section>
  );
}
