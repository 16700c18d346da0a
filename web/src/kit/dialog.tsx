import type { ComponentChildren } from 'preact';
import { useEffect, useId, useRef } from 'preact/hooks';
import { createStore } from '../base/store.ts';
import { t } from '../base/text.ts';
import { Button } from './button.tsx';
import { useStore } from './hooks.ts';

interface DialogProps {
  title: string;
  children: ComponentChildren;
  /**
   * The buttons, beginning with the one that changes nothing. It gets the focus unless something in the
   * dialog has `data-first`.
   */
  actions: ComponentChildren;
  /** Called on Esc. */
  onClose(): void;
}

export const isDialogOpen = () => document.querySelector('dialog[open]') !== null;

export function Dialog({ title, children, actions, onClose }: DialogProps) {
  const dialog = useRef<HTMLDialogElement>(null);
  const titleId = useId();
  useEffect(() => {
    const before = document.activeElement;
    dialog.current!.showModal();
    dialog.current!.querySelector<HTMLElement>('[data-first], .dialog-actions button')?.focus();
    dialog.current!.scrollTop = 0; // the buttons have the focus, but a long list is read from its beginning
    return () => {
      if (before instanceof HTMLElement && before.isConnected) before.focus();
    };
  }, []);
  return (
    <dialog
      ref={dialog}
      class="dialog"
      aria-labelledby={titleId}
      onCancel={(event) => {
        event.preventDefault();
        onClose();
      }}
    >
      <h2 id={titleId}>{title}</h2>
      <div class="dialog-body">{children}</div>
      <div class="dialog-actions">{actions}</div>
    </dialog>
  );
}

interface Question {
  title: string;
  body?: string;
  /** The affected items: the first five are named, the rest counted. */
  items?: string[];
  /** Names every item, for a short list in which each one matters. */
  listAll?: boolean;
  /** The verb on the button that confirms. */
  verb: string;
  /** The action destroys something. */
  danger?: boolean;
}

const namedItems = 5;
const question = createStore<(Question & { answer(yes: boolean): void }) | undefined>(undefined);

/**
 * Asks before an action. Resolves to false on Esc. There is one question at a time: a new one cancels an
 * open one.
 */
export function confirm(asked: Question): Promise<boolean> {
  question.get()?.answer(false);
  return new Promise((resolve) => {
    const answer = (yes: boolean) => {
      question.set(undefined);
      resolve(yes);
    };
    question.set({ ...asked, answer });
  });
}

export function ConfirmDialog() {
  const asked = useStore(question);
  if (!asked) return null;
  const items = asked.items ?? [];
  const named = asked.listAll ? items.length : namedItems;
  return (
    <Dialog
      key={asked.title}
      title={asked.title}
      onClose={() => asked.answer(false)}
      actions={
        <>
          <Button onClick={() => asked.answer(false)}>{t('app.cancel')}</Button>
          <Button kind={asked.danger ? 'danger' : 'primary'} onClick={() => asked.answer(true)}>
            {asked.verb}
          </Button>
        </>
      }
    >
      {asked.body && <p>{asked.body}</p>}
      {items.length > 0 && (
        <ul>
          {items.slice(0, named).map((item) => (
            <li>{item}</li>
          ))}
          {items.length > named && (
            <li class="named-rest muted">{t('confirm.more', { n: items.length - named })}</li>
          )}
        </ul>
      )}
    </Dialog>
  );
}
